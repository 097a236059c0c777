// SPDX-License-Identifier: GPL-2.0-or-later
// Copy and Copy Path through the menu, read back from the real clipboard: in process,
// and under X11 (xcb) also from outside with xclip, as another program pastes.
#include "MenuProbe.h"
#include "TempTree.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QProcess>

using namespace temptree;
using namespace menuprobe;

namespace {

bool onX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

// What another program gets for a clipboard target; none when xclip gets nothing.
std::optional<QByteArray> pasteElsewhere(const QByteArray& target) {
    QProcess xclip;
    xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", QString::fromLatin1(target)});
    // Our own event loop must run meanwhile: this process answers xclip's request.
    if (!QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, 10000))
        return std::nullopt;
    if (xclip.exitStatus() != QProcess::NormalExit || xclip.exitCode() != 0)
        return std::nullopt;
    return xclip.readAllStandardOutput();
}

// The text targets a paste into a text field or terminal asks for.
const QList<QByteArray> kTextTargets{"UTF8_STRING", "STRING", "TEXT", "text/plain",
                                     "text/plain;charset=utf-8"};

} // namespace

class TestClipboard : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray folder;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        folder = tmp.freshFolder();
        for (const QByteArray& name :
             {QByteArray("plain.txt"), QByteArray("with space"), QByteArray("a \"quoted\" \\ name"),
              QByteArray("caf\xe9"), QByteArray("line\nbreak")})
            writeFile(join(folder, name), 10);
        makeDir(join(folder, "a folder"));
        if (onX11() && QStandardPaths::findExecutable("xclip").isEmpty())
            QFAIL("xclip is needed to read the X11 clipboard");
    }
    void cleanup() { closeMenus(); }

    // Copy puts the item on the clipboard as a file, in the two forms file managers
    // paste, and nothing that pastes as text. Copy Path puts its path there as text,
    // unquoted; clipboard text is Unicode, so a name that is not UTF-8 goes as it is
    // shown, U+FFFD in place of the stray byte.
    void copyAndCopyPath_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("uri"); // after the folder's own URI
        QTest::addColumn<QString>("text");   // after the folder's path
        QTest::newRow("plain") << QByteArray("plain.txt") << QByteArray("/plain.txt")
                               << "/plain.txt";
        QTest::newRow("space") << QByteArray("with space") << QByteArray("/with%20space")
                               << "/with space";
        QTest::newRow("quotes and backslash")
            << QByteArray("a \"quoted\" \\ name") << QByteArray("/a%20%22quoted%22%20%5C%20name")
            << "/a \"quoted\" \\ name";
        QTest::newRow("not UTF-8")
            << QByteArray("caf\xe9") << QByteArray("/caf%E9") << "/caf\uFFFD";
        QTest::newRow("line break")
            << QByteArray("line\nbreak") << QByteArray("/line%0Abreak") << "/line\nbreak";
        QTest::newRow("folder") << QByteArray("a folder") << QByteArray("/a%20folder")
                                << "/a folder";
    }
    void copyAndCopyPath() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, uri);
        QFETCH(QString, text);
        WindowFixture f;
        openAndSettle(f, folder);
        QGuiApplication::clipboard()->setText("before");
        choose(f, name, Copy);
        const QByteArray fullUri = "file://" + folder + uri;

        const QMimeData* held = QGuiApplication::clipboard()->mimeData();
        QVERIFY(held);
        QCOMPARE(held->formats(),
                 (QStringList{"text/uri-list", "x-special/gnome-copied-files", "text/plain"}));
        QCOMPARE(held->data("text/uri-list"), fullUri + "\r\n");
        QCOMPARE(held->data("x-special/gnome-copied-files"), "copy\n" + fullUri);
        // Pasted into a text field: the path, every byte of it for those who take bytes.
        const QString path = QString::fromUtf8(folder) + text;
        QCOMPARE(held->text(), path);
        QCOMPARE(held->data("text/plain"), folder + '/' + name);
        QCOMPARE(f.status->text(), "Copied: " + displayPath(name));

        if (onX11()) {
            const std::optional<QByteArray> targets = pasteElsewhere("TARGETS");
            QVERIFY(targets);
            const QList<QByteArray> offered = targets->trimmed().split('\n');
            QVERIFY(offered.contains("text/uri-list"));
            QVERIFY(offered.contains("x-special/gnome-copied-files"));
            QCOMPARE(pasteElsewhere("text/uri-list"), fullUri + "\r\n");
            QCOMPARE(pasteElsewhere("x-special/gnome-copied-files"), "copy\n" + fullUri);
            // Pasted as text elsewhere: the path's own bytes, or in the older targets the
            // path as far as Latin-1 can say it.
            QVERIFY(offered.contains("UTF8_STRING"));
            for (const QByteArray& target : kTextTargets) {
                if (!offered.contains(target))
                    continue;
                const QByteArray pasted = pasteElsewhere(target).value_or("absent");
                if (target == "UTF8_STRING" || target == "text/plain")
                    QCOMPARE(pasted, folder + '/' + name);
                else
                    QVERIFY(pasted.startsWith(folder + '/'));
            }
        }

        choose(f, name, CopyPath);
        QCOMPARE(QGuiApplication::clipboard()->text(), path);
        QCOMPARE(f.status->text(), "Path copied: " + path);
        if (onX11())
            QCOMPARE(pasteElsewhere("UTF8_STRING"), path.toUtf8());
    }

    // In another language the status line speaks it; the clipboard is the same.
    void statusInTheLanguage() {
        WindowFixture f;
        openAndSettle(f, folder);
        speak(Lang::fr);
        choose(f, "plain.txt", CopyPath);
        QCOMPARE(f.status->text(), QString::fromUtf8("Chemin copié : ") +
                                       QFile::decodeName(join(folder, "plain.txt")));
        choose(f, "plain.txt", Copy);
        QCOMPARE(f.status->text(), QString::fromUtf8("Copié : plain.txt"));
        speak(Lang::en);
    }
};

QTEST_MAIN(TestClipboard)
#include "tst_clipboard.moc"
