// SPDX-License-Identifier: GPL-2.0-or-later
// The real program in a real X session (Xvfb): it opens its window on a folder given
// on the command line, its right-click menu reads out on the accessibility bus and is
// driven with the keyboard, its actions reach other programs (Copy Path the clipboard,
// Move to Trash the trash) and its own windows read out, a second launch hands its
// folder over, closing the window ends it cleanly, and so does SIGTERM amid an action.
#include "AtSpi.h"
#include "TempTree.h"
#include "X11Windows.h"

#include <QDBusMetaType>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <X11/keysym.h>
#include <sys/stat.h>

using namespace temptree;

class TestEndToEnd : public QObject {
    Q_OBJECT
    Dir tmp;

    void startProgram(QProcess& program, const QStringList& arguments,
                      const QProcessEnvironment& extra = {}) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(extra);
        env.insert("QT_QPA_PLATFORM", "xcb");
        env.insert("XDG_CONFIG_HOME", QFile::decodeName(tmp.bytes()) + "/config");
        program.setProcessEnvironment(env);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(SIZELOOM_BINARY, arguments);
        QVERIFY(program.waitForStarted());
    }

    // The focus, followed until it reaches the object of that name; invalid if never.
    static AtSpiObject focusGoesTo(AtSpiBus& atspi, const QString& name) {
        AtSpiObject focused;
        for (int events = 0; events < 20 && atspi.name(focused) != name; ++events)
            focused = atspi.nextFocus();
        return atspi.name(focused) == name ? focused : AtSpiObject();
    }

    // Right-click on the row, then the keyboard down the menu to the entry, which is
    // chosen once it has the focus. Returns what a screen reader read of the menu while
    // it was open: its name, then each entry's name ("-" for a separator); empty when
    // the focus never got there.
    static QStringList chooseFromMenu(AtSpiBus& atspi, X11Display& x, Window window,
                                      const AtSpiObject& row, int downs, const QString& entry) {
        // Selected first, as a user would. These clicks are sent, not typed: once another
        // window has closed, a sent right-click opens the menu only after a click has
        // made the window active again.
        const AtSpiObject frame = atspi.find(AtSpiBus::desktop(), "frame", "Sizeloom", 4);
        x.click(atspi.extents(row).center(), Button1);
        if (!QTest::qWaitFor([&] { return atspi.isActive(frame); }, 10000))
            return {};
        x.click(atspi.extents(row).center(), Button3);
        x.key(window, XK_Down);
        const AtSpiObject first = focusGoesTo(atspi, "Show in File Manager");
        if (!first.isValid())
            return {};
        const AtSpiObject menu = atspi.parent(first);
        QStringList read{atspi.role(menu) + ": " + atspi.name(menu)};
        for (const AtSpiObject& item : atspi.children(menu))
            read << (atspi.role(item) == "separator" ? QString("-") : atspi.name(item));
        for (int down = 0; down < downs; ++down)
            x.key(window, XK_Down);
        if (!focusGoesTo(atspi, entry).isValid())
            return {};
        x.key(window, XK_Return);
        return read;
    }

private Q_SLOTS:
    void initTestCase() {
        if (qEnvironmentVariableIsEmpty("DISPLAY") ||
            qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs an X display and a session bus; ctest runs this test under "
                  "dbus-run-session and xvfb-run");
        QVERIFY(X11Display().isOpen());
    }

    // The program on a folder, its interface on the accessibility bus and a client of
    // that bus following the focus. A right-click on a row: the menu a screen reader
    // reads out, Copy Path chosen with the keyboard and pasted by another program, then
    // Rename… with the new name typed into its dialog, Move to Trash, and Quick Look and
    // Get Info read out. Then "Open With" from a file manager starts a second copy with
    // another folder: it hands the folder over and ends.
    void realWindowMenuAndSecondLaunch() {
        // The accessibility bus keeps its socket under the runtime folder: one of this
        // test's own, so that nothing else running on the machine shares it.
        const QByteArray runtime = join(tmp.bytes(), "runtime");
        if (!QFileInfo::exists(QFile::decodeName(runtime)))
            QCOMPARE(mkdir(runtime.constData(), 0700), 0);
        qDBusRegisterMetaType<QMap<QString, QString>>();
        QDBusMessage environment =
            QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "UpdateActivationEnvironment");
        environment << QVariant::fromValue(
            QMap<QString, QString>{{"XDG_RUNTIME_DIR", QFile::decodeName(runtime)}});
        const QDBusMessage updated = QDBusConnection::sessionBus().call(environment);
        QVERIFY2(updated.type() == QDBusMessage::ReplyMessage, qPrintable(updated.errorMessage()));
        AtSpiBus atspi;
        QVERIFY2(atspi.connect(), "no accessibility bus");
        QVERIFY(atspi.followFocus());

        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "notes.txt"), 3000);
        writeFile(join(folder, "other"), 9000);
        // The trash of a home of the test's own, on the same disk as the folder.
        const QString home = QFile::decodeName(tmp.bytes()) + "/home";
        QVERIFY(QDir().mkpath(home + "/.local/share"));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home);
        env.insert("XDG_DATA_HOME", home + "/.local/share");
        QProcessEnvironment extra = env;
        extra.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        extra.insert("XDG_RUNTIME_DIR", QFile::decodeName(runtime));
        QProcess program;
        startProgram(program, {QFile::decodeName(folder)}, extra);
        X11Display x;
        QVERIFY2(x.isOpen(), "cannot open the X display");
        Window window = 0;
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        AtSpiObject row;
        QTRY_VERIFY_WITH_TIMEOUT(
            (row = atspi.find(AtSpiBus::desktop(), "tree item", "notes.txt")).isValid(), 15000);

        QCOMPARE(chooseFromMenu(atspi, x, window, row, 7, "Copy Path"),
                 (QStringList{"popup menu: notes.txt", "Show in File Manager", "Quick Look",
                              "Get Info", "-", "Rename…", "Duplicate", "Move to Trash", "-", "Copy",
                              "Copy Path", "Share…", "-", "Compress"}));
        const auto pasted = [] {
            QProcess xclip;
            xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", "UTF8_STRING"});
            return xclip.waitForFinished(10000) ? xclip.readAllStandardOutput() : QByteArray();
        };
        QTRY_COMPARE_WITH_TIMEOUT(pasted(), join(folder, "notes.txt"), 10000);

        QVERIFY(!chooseFromMenu(atspi, x, window, row, 3, "Rename…").isEmpty());
        Window dialog = 0;
        QTRY_VERIFY_WITH_TIMEOUT((dialog = x.findWindow("Rename")) != 0, 10000);
        AtSpiObject dialogObject;
        QTRY_VERIFY_WITH_TIMEOUT(
            (dialogObject = atspi.find(AtSpiBus::desktop(), "dialog", "Rename", 4)).isValid(),
            10000);
        QTRY_VERIFY_WITH_TIMEOUT(atspi.isActive(dialogObject), 10000);
        x.key(dialog, XK_a, ControlMask);
        for (const KeySym typed : {XK_k, XK_e, XK_p, XK_t, XK_period, XK_t, XK_x, XK_t})
            x.key(dialog, typed);
        x.key(dialog, XK_Return);
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(QFile::decodeName(join(folder, "kept.txt"))),
                                 10000);
        QVERIFY(!QFileInfo::exists(QFile::decodeName(join(folder, "notes.txt"))));
        AtSpiObject kept;
        QTRY_VERIFY_WITH_TIMEOUT(
            (kept = atspi.find(AtSpiBus::desktop(), "tree item", "kept.txt")).isValid(), 10000);

        // Move to Trash takes the row away and puts the file in the trash, where other
        // desktops' tools find it.
        QVERIFY(!chooseFromMenu(atspi, x, window, kept, 5, "Move to Trash").isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(
            !atspi.find(AtSpiBus::desktop(), "tree item", "kept.txt").isValid(), 10000);
        QVERIFY(!QFileInfo::exists(QFile::decodeName(join(folder, "kept.txt"))));
        QProcess list;
        list.setProcessEnvironment(env);
        list.start("trash-list", {});
        QVERIFY(list.waitForFinished(10000));
        QVERIFY2(list.readAllStandardOutput().contains(join(folder, "kept.txt")),
                 "trash-list does not show the trashed file");

        // Without a previewer or file manager on the session bus, Quick Look and Get Info
        // open Sizeloom's own windows, which a screen reader finds and reads.
        AtSpiObject other;
        QVERIFY((other = atspi.find(AtSpiBus::desktop(), "tree item", "other")).isValid());
        QVERIFY(!chooseFromMenu(atspi, x, window, other, 1, "Quick Look").isEmpty());
        AtSpiObject preview, text;
        QTRY_VERIFY_WITH_TIMEOUT(
            (preview = atspi.find(AtSpiBus::desktop(), "dialog", "other", 4)).isValid(), 10000);
        QTRY_VERIFY((text = atspi.find(preview, "text", "other")).isValid());
        QCOMPARE(atspi.text(text), QString(9000, u'x'));
        x.key(window, XK_Escape);
        QTRY_VERIFY_WITH_TIMEOUT(!atspi.find(AtSpiBus::desktop(), "dialog", "other", 4).isValid(),
                                 10000);
        QVERIFY(!chooseFromMenu(atspi, x, window, other, 2, "Get Info").isEmpty());
        AtSpiObject info, pathValue;
        QTRY_VERIFY_WITH_TIMEOUT(
            (info = atspi.find(AtSpiBus::desktop(), "dialog", "other", 4)).isValid(), 10000);
        QTRY_VERIFY(
            (pathValue = atspi.find(info, "label", QFile::decodeName(join(folder, "other"))))
                .isValid());
        QCOMPARE(atspi.description(pathValue), QString("Path"));

        const QByteArray handed = tmp.freshFolder();
        writeFile(join(handed, "handed.txt"), 100);
        QProcess second;
        startProgram(second, {"file://" + QFile::decodeName(handed)});
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(
            atspi.find(AtSpiBus::desktop(), "tree item", "handed.txt").isValid(), 10000);
        QCOMPARE(program.state(), QProcess::Running);

        x.requestClose(window);
        QVERIFY(program.waitForFinished(15000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);

        // Told to end (SIGTERM) while it compresses, it quits the orderly way, within the
        // two seconds given to running work, and no archive is left, under any name.
        const QByteArray bulky = tmp.freshFolder();
        {
            const int fd = open(join(bulky, "bulk.bin").constData(), O_WRONLY | O_CREAT, 0644);
            QByteArray chunk(1 << 20, Qt::Uninitialized);
            for (int mib = 0; mib < 384; ++mib) {
                QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(chunk.data()),
                                                      chunk.size() / 4);
                QCOMPARE(write(fd, chunk.constData(), size_t(chunk.size())), ssize_t(chunk.size()));
            }
            close(fd);
        }
        QProcess third;
        startProgram(third, {QFile::decodeName(bulky)}, extra);
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        AtSpiObject bulk;
        QTRY_VERIFY_WITH_TIMEOUT(
            (bulk = atspi.find(AtSpiBus::desktop(), "tree item", "bulk.bin")).isValid(), 15000);
        QVERIFY(!chooseFromMenu(atspi, x, window, bulk, 9, "Compress").isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(
            atspi.find(AtSpiBus::desktop(), "label", "Compressing… bulk.bin").isValid(), 10000);
        QElapsedTimer ending;
        ending.start();
        third.terminate();
        QVERIFY(third.waitForFinished(10000));
        QVERIFY2(ending.elapsed() < 3000, qPrintable(QString::number(ending.elapsed())));
        QCOMPARE(third.exitStatus(), QProcess::NormalExit);
        QCOMPARE(third.exitCode(), 0);
        QCOMPARE(runForOutput("/bin/ls", {"-A", bulky}), std::optional<QByteArray>("bulk.bin\n"));
    }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
