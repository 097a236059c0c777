// SPDX-License-Identifier: GPL-2.0-or-later
// Rename: the move that never replaces, and the action through its real dialog.
#include "LoopImage.h"
#include "ModalDriver.h"
#include "TempTree.h"
#include "platform/RenameNoReplace.h"
#include "platform/SystemReason.h"
#include "platform/UniqueFd.h"
#include "window/WindowFixture.h"

#include <QProcess>
#include <cerrno>

using namespace temptree;

namespace {

// By path bytes: QFile cannot name files whose names are not UTF-8.
QByteArray contentOf(const QByteArray& path) {
    return runForOutput("/bin/cat", {"--", path}).value_or("<missing>");
}

// Type, mode, size and link target of the item and of all below it, then its content.
QByteArray facts(const QByteArray& path) {
    return runForOutput("/usr/bin/find", {path, "-printf", "%P %y %M %s %l\\n"}).value_or("") +
           contentOf(path);
}

bool exists(const QByteArray& path) {
    struct stat info {};
    return lstat(path.constData(), &info) == 0;
}

// The moves by path, for items of one folder: the errno, 0 when done.
using Mover = int (*)(const QByteArray&, const QByteArray&);
template <Done (*move)(int, const QByteArray&, const QByteArray&)>
int inItsFolder(const QByteArray& from, const QByteArray& to) {
    const UniqueFd folder(open(deletingLastPathComponent(from).constData(), O_PATH | O_DIRECTORY));
    return move(folder.get(), lastPathComponent(from), lastPathComponent(to)).error();
}
constexpr Mover renameNoReplace = inItsFolder<renameNoReplaceAt>;
constexpr Mover renameNoReplaceByHand = inItsFolder<renameNoReplaceByHandAt>;

} // namespace

class TestRename : public QObject {
    Q_OBJECT
    Dir tmp;

    // a.txt ("a"), b.txt ("b"), an empty folder dir, a folder full holding f.
    QByteArray sample() {
        const QByteArray folder = tmp.freshFolder();
        writeBytes(join(folder, "a.txt"), "a");
        writeBytes(join(folder, "b.txt"), "b");
        makeDir(join(folder, "dir"));
        makeDir(join(folder, "full"));
        writeBytes(join(folder, "full/f"), "f");
        return folder;
    }

    // The outline's rows of the root, once its listing is in.
    static QList<QByteArray> rootRows(WindowFixture& f) { return f.rowNames(f.rootIndex()); }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    // Both the kernel's no-replace rename and the fallback for file systems that
    // refuse it, on the same cases. A link moves as a link, a dangling one too.
    void neverReplaces_data() {
        QTest::addColumn<bool>("byHand");
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<int>("error");
        for (const bool byHand : {false, true}) {
            const char* how = byHand ? "by hand: " : "renameat2: ";
            const auto row = [&](const char* name) -> QTestData& {
                return QTest::newRow(qPrintable(QString(how) + name)) << byHand;
            };
            row("file to a free name") << QByteArray("a.txt") << QByteArray("c.txt") << 0;
            row("folder to a free name") << QByteArray("full") << QByteArray("moved") << 0;
            row("file onto a file") << QByteArray("a.txt") << QByteArray("b.txt") << EEXIST;
            row("folder onto an empty folder") << QByteArray("full") << QByteArray("dir") << EEXIST;
            row("file onto a folder") << QByteArray("a.txt") << QByteArray("dir") << EEXIST;
            row("name not UTF-8") << QByteArray("n\xe9") << QByteArray("plain") << 0;
            row("source gone") << QByteArray("gone") << QByteArray("c.txt") << ENOENT;
            row("hard link of the same file")
                << QByteArray("a.txt") << QByteArray("link") << EEXIST;
            row("dangling link") << QByteArray("dangling") << QByteArray("moved") << 0;
        }
    }
    void neverReplaces() {
        QFETCH(bool, byHand);
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(int, error);
        const QByteArray folder = sample();
        writeBytes(join(folder, "n\xe9"), "latin");
        QCOMPARE(link(join(folder, "a.txt").constData(), join(folder, "link").constData()), 0);
        QCOMPARE(symlink("nowhere", join(folder, "dangling").constData()), 0);
        const QByteArray before = runForOutput("/bin/ls", {"-lR", "--", folder}).value_or("");
        const QByteArray fromFacts = facts(join(folder, from));

        const Mover move = byHand ? renameNoReplaceByHand : renameNoReplace;
        QCOMPARE(move(join(folder, from), join(folder, to)), error);
        if (error) {
            // Nothing changed at all, no reservation left behind.
            QCOMPARE(runForOutput("/bin/ls", {"-lR", "--", folder}).value_or(""), before);
            return;
        }
        QVERIFY(!exists(join(folder, from)));
        QCOMPARE(facts(join(folder, to)), fromFacts);
    }

    // On a file system that ignores case, a change of case only is a rename of the item
    // itself; another item of the same name in other letters is still refused.
    void caseOnly_data() {
        QTest::addColumn<QString>("type");
        QTest::newRow("vfat") << "vfat";
        QTest::newRow("exfat") << "exfat";
    }
    void caseOnly() {
        QFETCH(QString, type);
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, "CASES", type);
        const QByteArray folder = image.mountPoint;
        writeBytes(join(folder, "photo.JPG"), "jpeg");
        writeBytes(join(folder, "other.txt"), "other");
        makeDir(join(folder, "Dir"));
        for (const Mover move : {renameNoReplace, renameNoReplaceByHand}) {
            QCOMPARE(move(join(folder, "photo.JPG"), join(folder, "photo.jpg")), 0);
            QCOMPARE(move(join(folder, "Dir"), join(folder, "dir")), 0);
            QCOMPARE(move(join(folder, "other.txt"), join(folder, "PHOTO.jpg")), EEXIST);
            QCOMPARE(runForOutput("/bin/ls", {"--", folder}).value_or(""),
                     QByteArray("dir\nother.txt\nphoto.jpg\n"));
            QCOMPARE(contentOf(join(folder, "photo.jpg")), QByteArray("jpeg"));
            // And back, for the next way of moving.
            QCOMPARE(move(join(folder, "photo.jpg"), join(folder, "photo.JPG")), 0);
            QCOMPARE(move(join(folder, "dir"), join(folder, "Dir")), 0);
        }
    }

    void renamesThroughTheDialog_data() {
        QTest::addColumn<QByteArray>("item");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("newName");
        QTest::newRow("file") << QByteArray("a.txt") << "renamed.txt" << QByteArray("renamed.txt");
        QTest::newRow("folder, spaces trimmed")
            << QByteArray("full") << "\t folder two  " << QByteArray("folder two");
        QTest::newRow("case only") << QByteArray("a.txt") << "A.TXT" << QByteArray("A.TXT");
        QTest::newRow("old name not UTF-8")
            << QByteArray("caf\xe9") << "café" << QByteArray("caf\xc3\xa9");
        QTest::newRow("only the extension of a name not UTF-8")
            << QByteArray("caf\xe9.txt") << "caf\ufffd.md" << QByteArray("caf\xe9.md");
    }
    void renamesThroughTheDialog() {
        QFETCH(QByteArray, item);
        QFETCH(QString, typed);
        QFETCH(QByteArray, newName);
        const QByteArray folder = sample();
        writeBytes(join(folder, "caf\xe9"), "latin");
        writeBytes(join(folder, "caf\xe9.txt"), "latin text");
        const QByteArray content = contentOf(join(folder, item));
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick(item));
        answerRename(f.picked.name, typed);
        f.actions->rename(f.picked);
        QVERIFY(f.nextOutcome());
        QVERIFY(!exists(join(folder, item)));
        QCOMPARE(contentOf(join(folder, newName)), content);
        // The folder is listed afresh: the new name has a row, the old one none.
        QTRY_VERIFY(rootRows(f).contains(newName) && !rootRows(f).contains(item));
    }

    // The opened folder renamed from its own row: the window opens it under its new name.
    void openedFolderRenamed() {
        const QByteArray folder = sample();
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        answerRename(lastPathComponent(folder), "renamed folder");
        f.actions->rename(f.itemAt(f.rootIndex()));
        QVERIFY(f.nextOutcome());
        const QByteArray renamed = join(deletingLastPathComponent(folder), "renamed folder");
        QVERIFY(!exists(folder));
        QVERIFY(f.settled());
        QCOMPARE(f.rootPath(), renamed);
        QCOMPARE(f.pathField->text(), QString::fromUtf8(renamed));
        QVERIFY(f.status->text().startsWith(QString::fromUtf8(renamed) + "  ·  "));
        QVERIFY(f.rowNames(f.rootIndex()).contains("a.txt"));
        QCOMPARE(rename(renamed.constData(), folder.constData()), 0);
    }

    // Unchanged, blank or cancelled: nothing is said. Refused or taken: an alert names
    // the item and gives the reason. Either way the disk and the tree stay as they
    // were, and nothing moves into another folder.
    void nothingMoves_data() {
        QTest::addColumn<QString>("typed");  // null: the dialog is cancelled
        QTest::addColumn<QString>("reason"); // empty: no alert
        QTest::newRow("unchanged") << "a.txt" << QString();
        QTest::newRow("spaces around") << "  a.txt\u3000" << QString();
        QTest::newRow("empty") << "" << QString();
        QTest::newRow("cancelled") << QString() << QString();
        const QString taken = QString::fromLocal8Bit(strerror(EEXIST));
        const QString invalid = QString::fromLocal8Bit(strerror(EINVAL));
        QTest::newRow("taken by a file") << "b.txt" << taken;
        QTest::newRow("into a folder") << "dir/a.txt" << invalid;
        QTest::newRow("dot dot") << ".." << invalid;
        QTest::newRow("too long") << QString(300, u'x')
                                  << QString::fromLocal8Bit(strerror(ENAMETOOLONG));
    }
    void nothingMoves() {
        QFETCH(QString, typed);
        QFETCH(QString, reason);
        const QByteArray folder = sample();
        const QByteArray before = runForOutput("/bin/ls", {"-lR", "--", folder}).value_or("");
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("a.txt"));
        const std::vector<EntryId> listing = f.index().children(f.rootId());
        SeenAlert seen;
        QPointer<QTimer> alert;
        if (typed.isNull())
            whenModal([&](QWidget* dialog) {
                QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Escape);
                alert = dismissAlert(&seen);
            });
        else
            answerRename("a.txt", typed, [&] { alert = dismissAlert(&seen); });
        f.actions->rename(f.picked);
        if (reason.isEmpty())
            QTest::qWait(50); // room for an alert that must not come
        else
            QVERIFY(f.nextOutcome());
        delete alert;
        QCOMPARE(seen.shown, !reason.isEmpty());
        if (seen.shown) {
            QCOMPARE(seen.text, QString("a.txt"));
            QCOMPARE(seen.informative, reason);
        }
        QCOMPARE(runForOutput("/bin/ls", {"-lR", "--", folder}).value_or(""), before);
        QCOMPARE(f.index().children(f.rootId()), listing);
    }

    // The reason comes in the interface language when the system has its messages: a
    // German locale compiled for the test, found through LOCPATH.
    void reasonInTheInterfaceLanguage() {
        const QString localedef = QStandardPaths::findExecutable("localedef");
        if (localedef.isEmpty())
            QSKIP("localedef is not installed");
        QTemporaryDir locales;
        QProcess make;
        make.start(localedef, {"-i", "de_DE", "-f", "UTF-8", locales.filePath("de_DE.UTF-8")});
        QVERIFY(make.waitForFinished(120000));
        if (make.exitCode() > 1) // 1: warnings only
            QSKIP("the de_DE locale sources are not installed");
        qputenv("LOCPATH", QFile::encodeName(locales.path()));
        const QString german = systemReason(ENOENT, "de");
        qunsetenv("LOCPATH");
        QCOMPARE(german, QString("Datei oder Verzeichnis nicht gefunden"));
        QCOMPARE(systemReason(ENOENT, "ko"), QString::fromLocal8Bit(strerror(ENOENT)));
    }
};

QTEST_MAIN(TestRename)
#include "tst_rename.moc"
