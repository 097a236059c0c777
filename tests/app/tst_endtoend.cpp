// The real program in a real X session (Xvfb): it opens its window on a folder given
// on the command line, its right-click menu reads out on the accessibility bus and its
// Copy Path reaches other programs, and closing the window ends it cleanly.
#include "AtSpi.h"
#include "TempTree.h"
#include "X11Windows.h"

#include <QDBusMetaType>
#include <QProcess>
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

    // The folder of the menu tests: notes.txt (again, if a test has moved it) and one more file.
    QByteArray menuFolder() {
        const QByteArray folder = join(tmp.bytes(), "menu");
        if (!QFileInfo::exists(QFile::decodeName(folder)))
            makeDir(folder);
        if (!QFileInfo::exists(QFile::decodeName(join(folder, "notes.txt"))))
            writeFile(join(folder, "notes.txt"), 3000);
        if (!QFileInfo::exists(QFile::decodeName(join(folder, "other"))))
            writeFile(join(folder, "other"), 9000);
        return folder;
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

    // The real program open on the menu folder, its interface on the accessibility bus,
    // and a client of that bus following the focus; then its window and the row of
    // notes.txt as a screen reader finds it.
    struct Readable {
        AtSpiBus atspi;
        QProcess program;
        X11Display x;
        Window window = 0;
        AtSpiObject row;
    };
    void startReadable(Readable& readable, const QMap<QString, QString>& moreEnvironment = {}) {
        auto& [atspi, program, x, window, row] = readable;
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
        QVERIFY2(atspi.connect(), "no accessibility bus");
        QVERIFY(atspi.followFocus());
        QProcessEnvironment extra;
        extra.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        extra.insert("XDG_RUNTIME_DIR", QFile::decodeName(runtime));
        for (auto it = moreEnvironment.begin(); it != moreEnvironment.end(); ++it)
            extra.insert(it.key(), it.value());
        startProgram(program, {QFile::decodeName(menuFolder())}, extra);
        QVERIFY2(x.isOpen(), "cannot open the X display");
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        QTRY_VERIFY_WITH_TIMEOUT(
            (row = atspi.find(AtSpiBus::desktop(), "tree item", "notes.txt")).isValid(), 15000);
    }

private Q_SLOTS:
    void initTestCase() {
        if (qEnvironmentVariableIsEmpty("DISPLAY"))
            QSKIP("needs an X display; ctest runs this test under xvfb-run");
        QVERIFY(X11Display().isOpen());
    }

    void opensOnAFolderAndQuitsWhenClosed_data() {
        QTest::addColumn<bool>("withFolder");
        QTest::newRow("folder argument") << true;
        QTest::newRow("no argument") << false;
    }
    void opensOnAFolderAndQuitsWhenClosed() {
        QFETCH(bool, withFolder);
        const QByteArray folder = join(tmp.bytes(), "tree");
        if (withFolder && !QFileInfo::exists(QFile::decodeName(folder))) {
            makeDir(folder);
            makeDir(join(folder, "sub"));
            writeFile(join(join(folder, "sub"), "data"), 100000);
        }
        QProcess program;
        startProgram(program, withFolder ? QStringList{QFile::decodeName(folder)} : QStringList{});
        X11Display x;
        QVERIFY2(x.isOpen(), "cannot open the X display");
        Window window = 0;
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        QTRY_COMPARE(x.geometry(window).size(), QSize(820, 600));
        const QByteArray shots = qgetenv("SIZELOOM_SCREENSHOTS");
        if (!shots.isEmpty()) {
            QTest::qWait(withFolder ? 1500 : 300); // only so the picture shows the filled tree
            x.capture(window).save(QFile::decodeName(shots) + "/x11-" + QTest::currentDataTag() +
                                   ".png");
        }
        x.requestClose(window);
        QVERIFY(program.waitForFinished(15000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    // A right-click on a row of the real window: the menu a screen reader reads out,
    // Copy Path chosen with the keyboard and pasted by another program. Then, without a
    // previewer or file manager on the session bus, Quick Look and Get Info open
    // Sizeloom's own windows, which a screen reader finds and reads.
    void menuOnTheRealWindow() {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs a session bus; ctest runs this test under dbus-run-session");
        Readable readable;
        startReadable(readable);
        if (QTest::currentTestFailed())
            return;
        auto& [atspi, program, x, window, row] = readable;
        QCOMPARE(chooseFromMenu(atspi, x, window, row, 7, "Copy Path"),
                 (QStringList{"popup menu: notes.txt", "Show in File Manager", "Quick Look",
                              "Get Info", "-", "Rename…", "Duplicate", "Move to Trash", "-", "Copy",
                              "Copy Path", "Share…", "-", "Compress"}));
        const QByteArray path = join(menuFolder(), "notes.txt");
        const auto pasted = [] {
            QProcess xclip;
            xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", "UTF8_STRING"});
            return xclip.waitForFinished(10000) ? xclip.readAllStandardOutput() : QByteArray();
        };
        QTRY_COMPARE_WITH_TIMEOUT(pasted(), path, 10000);

        QVERIFY(!chooseFromMenu(atspi, x, window, row, 1, "Quick Look").isEmpty());
        AtSpiObject preview;
        QTRY_VERIFY_WITH_TIMEOUT(
            (preview = atspi.find(AtSpiBus::desktop(), "dialog", "notes.txt", 4)).isValid(), 10000);
        AtSpiObject text;
        QTRY_VERIFY((text = atspi.find(preview, "text", "notes.txt")).isValid());
        QCOMPARE(atspi.text(text), QString(3000, u'x'));
        x.key(window, XK_Escape);
        QTRY_VERIFY_WITH_TIMEOUT(
            !atspi.find(AtSpiBus::desktop(), "dialog", "notes.txt", 4).isValid(), 10000);

        QVERIFY(!chooseFromMenu(atspi, x, window, row, 2, "Get Info").isEmpty());
        AtSpiObject info;
        QTRY_VERIFY_WITH_TIMEOUT(
            (info = atspi.find(AtSpiBus::desktop(), "dialog", "notes.txt", 4)).isValid(), 10000);
        AtSpiObject pathValue;
        QTRY_VERIFY((pathValue = atspi.find(info, "label", QFile::decodeName(path))).isValid());
        QCOMPARE(atspi.description(pathValue), QString("Path"));
        AtSpiObject type;
        QTRY_VERIFY((type = atspi.find(info, "label", "Plain text document")).isValid());
        QCOMPARE(atspi.description(type), QString("Type"));

        x.requestClose(window);
        QVERIFY(program.waitForFinished(15000));
        QCOMPARE(program.exitCode(), 0);
    }

    // The disk actions through the same menu: Rename… types a new name into its dialog,
    // and Move to Trash takes the renamed row away and puts the file in the trash, where
    // other desktops' tools find it.
    void renameThenTrashThroughTheMenu() {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs a session bus; ctest runs this test under dbus-run-session");
        Readable readable;
        // The trash of a home of the test's own, on the same disk as the folder.
        const QString home = QFile::decodeName(tmp.bytes()) + "/home";
        QVERIFY(QDir().mkpath(home + "/.local/share"));
        startReadable(readable, {{"HOME", home}, {"XDG_DATA_HOME", home + "/.local/share"}});
        if (QTest::currentTestFailed())
            return;
        auto& [atspi, program, x, window, row] = readable;
        const QByteArray folder = menuFolder();

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
        AtSpiObject renamed;
        QTRY_VERIFY_WITH_TIMEOUT(
            (renamed = atspi.find(AtSpiBus::desktop(), "tree item", "kept.txt")).isValid(), 10000);

        QVERIFY(!chooseFromMenu(atspi, x, window, renamed, 5, "Move to Trash").isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(
            !atspi.find(AtSpiBus::desktop(), "tree item", "kept.txt").isValid(), 10000);
        QVERIFY(!QFileInfo::exists(QFile::decodeName(join(folder, "kept.txt"))));
        QProcess list;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home);
        env.insert("XDG_DATA_HOME", home + "/.local/share");
        list.setProcessEnvironment(env);
        list.start("trash-list", {});
        QVERIFY(list.waitForFinished(10000));
        QVERIFY2(list.readAllStandardOutput().contains(join(folder, "kept.txt")),
                 "trash-list does not show the trashed file");
        QVERIFY(atspi.find(AtSpiBus::desktop(), "tree item", "other").isValid());

        x.requestClose(window);
        QVERIFY(program.waitForFinished(15000));
        QCOMPARE(program.exitCode(), 0);
    }

    // "Open With" from a file manager starts a second copy with the folder; it hands the
    // folder to the running window and ends.
    void secondLaunchHandsTheFolderOver() {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs a session bus; ctest runs this test under dbus-run-session");
        const QByteArray folder = join(tmp.bytes(), "handed");
        makeDir(folder);
        QProcess first;
        startProgram(first, {});
        X11Display x;
        QVERIFY2(x.isOpen(), "cannot open the X display");
        Window window = 0;
        QTRY_VERIFY_WITH_TIMEOUT((window = x.findWindow("Sizeloom")) != 0, 15000);
        // The empty face has no accent colour in its top strip; the browsing face's
        // buttons there are accent-coloured.
        const auto topStripHasAccent = [&] {
            const QImage top = x.capture(window).copy(0, 0, 820, 40);
            for (int y = 0; y < top.height(); ++y)
                for (int x0 = 0; x0 < top.width(); ++x0) {
                    const QColor seen = top.pixelColor(x0, y);
                    if (seen.red() > 240 && seen.green() > 80 && seen.green() < 110 &&
                        seen.blue() < 50)
                        return true;
                }
            return false;
        };
        QVERIFY(!topStripHasAccent());

        QProcess second;
        startProgram(second, {"file://" + QFile::decodeName(folder)});
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(topStripHasAccent(), 10000);
        QCOMPARE(first.state(), QProcess::Running);

        x.requestClose(window);
        QVERIFY(first.waitForFinished(15000));
        QCOMPARE(first.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
