// SPDX-License-Identifier: GPL-2.0-or-later
// Duplicate: a faithful copy under the first free name, on a worker under a modal
// progress dialog; a failed or cancelled copy leaves nothing behind.
#include "ItemLocations.h"
#include "LoopImage.h"
#include "ModalDriver.h"
#include "TempTree.h"
#include "actions/ItemJobs.h"
#include "platform/TreeCopy.h"
#include "window/WindowFixture.h"

#include <QSemaphore>
#include <cerrno>
#include <thread>

using namespace temptree;

namespace {

// The folder (unless told otherwise) and every item below it, hidden ones too, with
// type and permissions, modification time (to the nanosecond), size and link target:
// two trees that print the same are copies.
QByteArray treeFacts(const QByteArray& folder, bool withFolder = true) {
    return runForOutput("/usr/bin/find", {folder, "-mindepth", withFolder ? "0" : "1", "-printf",
                                          "%P %M %T@ %s %l\\n"})
        .value_or("");
}

void setTime(const QByteArray& path, time_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 123456789}};
    QCOMPARE(utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

} // namespace

class TestDuplicate : public QObject {
    Q_OBJECT
    Dir tmp;

    // A folder of everything a copy must keep: modes, times (set last, folders too),
    // links relative and dangling, a sparse file, a name that is not UTF-8.
    QByteArray richFolder(const QByteArray& parent) {
        const QByteArray top = join(parent, "Photos");
        makeDir(top);
        makeDir(join(top, "private"));
        writeBytes(join(top, "private/secret"), "s");
        writeBytes(join(top, "caf\xe9.txt"), "latin");
        writeBytes(join(top, "script.sh"), "#!/bin/sh\n");
        const int fd = open(join(top, "sparse.img").constData(), O_WRONLY | O_CREAT, 0644);
        pwrite(fd, "head", 4, 0);
        pwrite(fd, "tail", 4, 64 << 20);
        close(fd);
        symlink("script.sh", join(top, "link").constData());
        symlink("../nowhere", join(top, "dangling").constData());
        chmod(join(top, "script.sh").constData(), 0751);
        chmod(join(top, "private/secret").constData(), 0600);
        chmod(join(top, "private").constData(), 0700);
        for (const char* item : {"private/secret", "private", "caf\xe9.txt", "script.sh",
                                 "sparse.img", "link", "dangling"})
            setTime(join(top, item), 1500000000);
        chmod(top.constData(), 0750);
        setTime(top, 1400000000);
        return top;
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void twiceGivesTheTableNames() {
        const QByteArray folder = tmp.freshFolder();
        writeBytes(join(folder, "report.pdf"), "pdf");
        // A dangling link already holds the first name of the folder's copy.
        makeDir(join(folder, "Photos"));
        symlink("gone", join(folder, "Photos copy").constData());
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        for (const QByteArray item : {"report.pdf", "report.pdf", "Photos"}) {
            QVERIFY(f.pick(item));
            f.actions->duplicate(f.picked);
            QVERIFY(f.nextOutcome());
            QVERIFY(f.listed(f.rootId()));
        }
        QCOMPARE(f.rowNames(f.rootIndex()).size(), 6);
        for (const QByteArray copy : {"report copy.pdf", "report copy 2.pdf"})
            QCOMPARE(runForOutput("/bin/cat", {join(folder, copy)}).value_or(""),
                     QByteArray("pdf"));
        QVERIFY(QFileInfo(QFile::decodeName(join(folder, "Photos copy 2"))).isDir());
        QCOMPARE(QFileInfo(QFile::decodeName(join(folder, "Photos copy"))).symLinkTarget(),
                 QFileInfo(QFile::decodeName(join(folder, "gone"))).absoluteFilePath());
    }

    void keepsEverything() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray source = richFolder(folder);
        const QByteArray before = treeFacts(source);
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("Photos"));
        f.actions->duplicate(f.picked);
        QVERIFY(f.nextOutcome());
        const QByteArray copy = join(folder, "Photos copy");
        QCOMPARE(treeFacts(copy), before);
        QCOMPARE(treeFacts(source), before);
        QCOMPARE(runForOutput("/usr/bin/diff", {"-r", "--no-dereference", source, copy}),
                 std::optional<QByteArray>(""));
        // 64 MiB long, a few blocks allocated, in the copy as in the original.
        QVERIFY(statBlocksBytes(join(copy, "sparse.img")) <= 64 * 1024);
        QVERIFY(f.listed(f.rootId()));
        QVERIFY(f.rowNames(f.rootIndex()).contains("Photos copy"));
    }

    // Files that are hard links of each other inside the folder stay so in the copy; a
    // file linked from outside the folder is copied, not linked to the outside.
    void hardLinksStayLinked() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray backups = join(folder, "backups");
        makeDir(backups);
        makeDir(join(backups, "monday"));
        makeDir(join(backups, "tuesday"));
        writeFile(join(backups, "monday/data"), 1 << 20);
        QCOMPARE(link(join(backups, "monday/data").constData(),
                      join(backups, "tuesday/data").constData()),
                 0);
        writeBytes(join(folder, "outside"), "o");
        QCOMPARE(link(join(folder, "outside").constData(), join(backups, "shared").constData()), 0);
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("backups"));
        f.actions->duplicate(f.picked);
        QVERIFY(f.nextOutcome());
        const QByteArray copy = join(folder, "backups copy");
        struct stat monday {
        }, tuesday{}, shared{}, original{};
        QCOMPARE(lstat(join(copy, "monday/data").constData(), &monday), 0);
        QCOMPARE(lstat(join(copy, "tuesday/data").constData(), &tuesday), 0);
        QCOMPARE(lstat(join(copy, "shared").constData(), &shared), 0);
        QCOMPARE(lstat(join(backups, "monday/data").constData(), &original), 0);
        QCOMPARE(monday.st_ino, tuesday.st_ino);
        QVERIFY(monday.st_ino != original.st_ino);
        QCOMPARE(monday.st_nlink, nlink_t(2));
        QCOMPARE(shared.st_nlink, nlink_t(1));
        // The copy takes the room of one file, as du counts it.
        QCOMPARE(duBytes(copy), duBytes(backups) - statBlocksBytes(join(backups, "shared")) +
                                    statBlocksBytes(join(copy, "shared")));
    }

    // A name near the limit of 255 bytes: the copy's name is shortened, its ending kept.
    void nameAtTheLimit() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray name = QByteArray(250, 'n') + ".txt";
        writeBytes(join(folder, name), "long");
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick(name));
        f.actions->duplicate(f.picked);
        const auto outcome = f.nextOutcome();
        QVERIFY(outcome && outcome->error == 0);
        const QByteArray copy = QByteArray(246, 'n') + " copy.txt";
        QCOMPARE(outcome->detail, QString::fromUtf8(copy));
        QCOMPARE(runForOutput("/bin/cat", {join(folder, copy)}), std::optional<QByteArray>("long"));
    }

    // A full disk: the alert names the item and gives the reason; the partial copy is
    // gone, the original intact, nothing else touched.
    void diskFull_data() {
        QTest::addColumn<bool>("folder");
        QTest::newRow("one large file") << false;
        QTest::newRow("folder of files") << true;
    }
    void diskFull() {
        QFETCH(bool, folder);
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, "FULL", "ext4", "16M");
        const QByteArray volume = image.mountPoint;
        const QByteArray item = join(volume, folder ? "album" : "big.bin");
        if (folder) {
            makeDir(item);
            for (int i = 0; i < 5; ++i)
                writeFile(join(item, "part" + QByteArray::number(i)), 2 << 20);
        } else {
            writeFile(item, 9 << 20);
        }
        const QByteArray before = treeFacts(volume, false);
        const QByteArray sum = runForOutput("/usr/bin/du", {"-ab", item}).value_or("");
        WindowFixture f;
        QVERIFY(f.openAt(volume));
        QVERIFY(f.pick(lastPathComponent(item)));
        SeenAlert seen;
        dismissAlert(&seen);
        f.actions->duplicate(f.picked);
        QVERIFY(f.nextOutcome());
        QVERIFY(seen.shown);
        QCOMPARE(seen.title, QString("Duplicate"));
        QCOMPARE(seen.text, QString::fromUtf8(lastPathComponent(item)));
        QCOMPARE(seen.informative, QString::fromLocal8Bit(strerror(ENOSPC)));
        QCOMPARE(treeFacts(volume, false), before);
        QCOMPARE(runForOutput("/usr/bin/du", {"-ab", item}).value_or(""), sum);
    }

    // Gone since its row was measured: nothing is done, and the status line says so.
    void sourceGone() {
        const QByteArray folder = tmp.freshFolder();
        writeBytes(join(folder, "doomed"), "x");
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("doomed"));
        QCOMPARE(unlink(join(folder, "doomed").constData()), 0);
        f.actions->duplicate(f.picked);
        QTRY_COMPARE(f.status->text(), QString("doomed changed on disk; nothing was done"));
        QCOMPARE(treeFacts(folder, false), QByteArray());
        QVERIFY(!QApplication::activeModalWidget());
    }

    // Cancelled in the middle: the copy made some of the folder, and removes exactly
    // that, not the original and not an item that was there before.
    void cancelMidwayRemovesWhatItMade() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray source = join(folder, "data");
        makeDir(source);
        writeFile(join(source, "a"), 1 << 20);
        writeFile(join(source, "b"), 512 << 20);
        writeBytes(join(folder, "unrelated"), "keep");
        const QByteArray before = treeFacts(folder, false);
        TreeCopy copy;
        std::atomic<int> result{-1};
        std::thread worker(
            [&] { result = duplicateItem(locationNow(folder, "data"), copy).error(); });
        // Once the copy is into the second file, the first one exists in the copy.
        while (copy.bytesDone() <= (2 << 20) && result == -1)
            std::this_thread::yield();
        copy.cancel();
        worker.join();
        QCOMPARE(result.load(), ECANCELED);
        QCOMPARE(treeFacts(folder, false), before);
    }
};

QTEST_MAIN(TestDuplicate)
#include "tst_duplicate.moc"
