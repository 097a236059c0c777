// SPDX-License-Identifier: GPL-2.0-or-later
// Compress: a zip archive beside the item that unzip checks, lists and extracts back
// to the same tree; a failed one is removed and said so in the status line.
#include "LoopImage.h"
#include "TempTree.h"
#include "window/WindowFixture.h"

#include <QProcess>
#include <QRandomGenerator>

using namespace temptree;

namespace {

// Names, types, modes, sizes and modification times, and where links point (a link's
// own time is not something unzip restores).
QByteArray treeFacts(const QByteArray& top) {
    return runForOutput("/usr/bin/find", {top, "-not", "-type", "l", "-printf", "%P %M %s %T@\\n"})
               .value_or("") +
           runForOutput("/usr/bin/find", {top, "-type", "l", "-printf", "%P %l\\n"}).value_or("");
}

void setTime(const QByteArray& path, time_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    QCOMPARE(utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

bool exists(const QByteArray& path) {
    struct stat info {};
    return lstat(path.constData(), &info) == 0;
}

// A file of the folder with no name yet (an archive being written), open here.
bool unnamedFileOpenIn(const QByteArray& folder) {
    for (int fd = 0; fd < 1024; ++fd) {
        char target[4096];
        const QByteArray link = "/proc/self/fd/" + QByteArray::number(fd);
        const ssize_t length = readlink(link.constData(), target, sizeof target);
        const QByteArray text(target, length > 0 ? length : 0);
        if (text.startsWith(folder + "/#") && text.endsWith(" (deleted)"))
            return true;
    }
    return false;
}

struct Run {
    int exitCode = -1;
    QByteArray output;
};
Run run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(300000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput()};
}

} // namespace

class TestCompress : public QObject {
    Q_OBJECT
    Dir tmp;

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void archivesAFolder() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray top = join(folder, "Photos.2024");
        makeDir(top);
        makeDir(join(top, "raw"));
        makeDir(join(top, "empty"));
        writeBytes(join(top, "raw/caf\xe9.txt"), "latin-1 name");
        writeBytes(join(top, "caf\xc3\xa9.txt"), "UTF-8 name");
        writeFile(join(top, "big.bin"), 3 << 20);
        writeBytes(join(top, "run.sh"), "#!/bin/sh\n");
        symlink("run.sh", join(top, "link").constData());
        symlink("../../nowhere", join(top, "raw/dangling").constData());
        chmod(join(top, "run.sh").constData(), 0751);
        chmod(join(top, "raw").constData(), 0700);
        for (const char* item :
             {"raw/caf\xe9.txt", "caf\xc3\xa9.txt", "big.bin", "run.sh", "raw", "empty"})
            setTime(join(top, item), 1500000000);
        setTime(top, 1400000000);
        const QByteArray before = treeFacts(top);

        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("Photos.2024"));
        f.actions->compress(f.picked);
        QCOMPARE(f.status->text(), QString("Compressing… Photos.2024"));
        QTRY_COMPARE(f.status->text(), QString("Compressed → Photos.zip"));
        QTRY_VERIFY(f.listed(f.rootId()) && f.rowNames(f.rootIndex()).contains("Photos.zip"));

        // Extracted (unzip checks every entry's CRC as it goes), the same tree: the names'
        // bytes, the folders' own entries and times, modes and links.
        const QByteArray out = tmp.freshFolder();
        const QString archive = QFile::decodeName(join(folder, "Photos.zip"));
        QCOMPARE(run("unzip", {"-q", archive, "-d", QFile::decodeName(out)}).exitCode, 0);
        QCOMPARE(runForOutput("/usr/bin/diff",
                              {"-r", "--no-dereference", top, join(out, "Photos.2024")}),
                 std::optional<QByteArray>(""));
        QCOMPARE(treeFacts(join(out, "Photos.2024")), before);
        QCOMPARE(treeFacts(top), before);
    }

    // An archive is no more readable than its item: at most the item's read and write
    // bits (a folder's without execute), and no more than the mask allows.
    void archiveStaysPrivate_data() {
        QTest::addColumn<bool>("folder");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("mask");
        QTest::addColumn<int>("archiveMode");
        QTest::newRow("private folder") << true << 0700 << 022 << 0600;
        QTest::newRow("private file") << false << 0600 << 022 << 0600;
        QTest::newRow("shared folder") << true << 0755 << 022 << 0644;
        QTest::newRow("group-writable file, strict mask") << false << 0664 << 077 << 0600;
        QTest::newRow("executable file") << false << 0751 << 0 << 0640;
    }
    void archiveStaysPrivate() {
        QFETCH(bool, folder);
        QFETCH(int, mode);
        QFETCH(int, mask);
        QFETCH(int, archiveMode);
        const QByteArray parent = tmp.freshFolder();
        const QByteArray item = join(parent, "secret");
        if (folder) {
            makeDir(item);
            writeBytes(join(item, "key"), "k");
            QCOMPARE(chmod(join(item, "key").constData(), 0600), 0);
        } else {
            writeBytes(item, "k");
        }
        QCOMPARE(chmod(item.constData(), mode_t(mode)), 0);
        const mode_t before = umask(mode_t(mask));
        WindowFixture f;
        QVERIFY(f.openAt(parent));
        QVERIFY(f.pick("secret"));
        f.actions->compress(f.picked);
        const auto outcome = f.nextOutcome();
        umask(before);
        QVERIFY(outcome && outcome->error == 0);
        struct stat archive {};
        QCOMPARE(stat(join(parent, "secret.zip").constData(), &archive), 0);
        QCOMPARE(int(archive.st_mode & 07777), archiveMode);
    }

    // A name near the file system's limit of 255 bytes gets a shortened archive name.
    void nameAtTheLimit() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray name(253, 'n');
        writeBytes(join(folder, name), "long");
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick(name));
        f.actions->compress(f.picked);
        const auto outcome = f.nextOutcome();
        QVERIFY(outcome && outcome->error == 0);
        const QByteArray archive = QByteArray(251, 'n') + ".zip";
        QCOMPARE(outcome->detail, QString::fromUtf8(archive));
        QCOMPARE(run("zipinfo", {"-1", QFile::decodeName(join(folder, archive))}).output,
                 name + '\n');
    }

    // Names follow the sequence; two requests in a row never share a name, also for
    // two items of the same base name.
    void namesNeverShared() {
        const QByteArray folder = tmp.freshFolder();
        writeBytes(join(folder, "report.pdf"), "pdf");
        writeBytes(join(folder, "report.txt"), "txt");
        writeBytes(join(folder, "report.zip"), "not ours");
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("report.pdf"));
        f.actions->compress(f.picked);
        QVERIFY(f.pick("report.txt"));
        f.actions->compress(f.picked);
        QTRY_VERIFY(f.status->text().startsWith("Compressed → report "));
        QTRY_VERIFY(
            exists(join(folder, "report 3.zip")) &&
            run("unzip", {"-t", QFile::decodeName(join(folder, "report 3.zip"))}).exitCode == 0);
        QCOMPARE(runForOutput("/bin/cat", {join(folder, "report.zip")}),
                 std::optional<QByteArray>("not ours"));
        // Each archive takes its name when complete, whichever is first.
        QByteArrayList held;
        for (const char* zip : {"report 2.zip", "report 3.zip"})
            held << run("zipinfo", {"-1", QFile::decodeName(join(folder, zip))}).output;
        std::ranges::sort(held);
        QCOMPARE(held, (QByteArrayList{"report.pdf\n", "report.txt\n"}));
    }

    // A full disk, or a folder where nothing can be created: no archive is left, the
    // original is intact, and the status line says it failed.
    void failureLeavesNothing_data() {
        QTest::addColumn<bool>("readOnly");
        QTest::newRow("disk full") << false;
        QTest::newRow("read-only volume") << true;
    }
    void failureLeavesNothing() {
        QFETCH(bool, readOnly);
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, "SMALL", "ext4", "16M");
        const QByteArray volume = image.mountPoint;
        // Random bytes do not shrink: their archive cannot fit beside them.
        QByteArray noise(9 << 20, Qt::Uninitialized);
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(noise.data()),
                                              noise.size() / 4);
        writeBytes(join(volume, "noise.bin"), noise);
        if (readOnly)
            QCOMPARE(run("mount", {"-o", "remount,ro", QFile::decodeName(volume)}).exitCode, 0);
        // What the volume holds (its own time changes as the archive comes and goes).
        const auto contents = [&] {
            return treeFacts(volume).mid(treeFacts(volume).indexOf('\n'));
        };
        const QByteArray before = contents();
        WindowFixture f;
        QVERIFY(f.openAt(volume));
        QVERIFY(f.pick("noise.bin"));
        f.actions->compress(f.picked);
        QTRY_COMPARE(f.status->text(), QString("Could not compress noise.bin: ") +
                                           strerror(readOnly ? EROFS : ENOSPC));
        QCOMPARE(contents(), before);
        QCOMPARE(runForOutput("/bin/cat", {join(volume, "noise.bin")}), std::optional(noise));
    }

    // Past 4 GiB (zip64): a sparse file, quick to make and to deflate.
    void largeFile() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray item = join(folder, "disk.img");
        const qint64 size = (qint64(4) << 30) + 4096;
        const int fd = open(item.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        QVERIFY(fd >= 0);
        QCOMPARE(pwrite(fd, "end", 3, size - 3), ssize_t(3));
        close(fd);
        WindowFixture f;
        QVERIFY(f.openAt(folder));
        QVERIFY(f.pick("disk.img"));
        f.actions->compress(f.picked);
        QTRY_COMPARE_WITH_TIMEOUT(f.status->text(), QString("Compressed → disk.zip"), 240000);
        const QString archive = QFile::decodeName(join(folder, "disk.zip"));
        QVERIFY(run("zipinfo", {archive}).output.contains(QByteArray::number(size) + " "));
        QCOMPARE(run("unzip", {"-t", archive}).exitCode, 0);
    }

    // The program ends while an archive is being written: the archive never had its
    // name, and nothing of it is left.
    void quitMidwayRemovesTheArchive() {
        const QByteArray folder = tmp.freshFolder();
        const QByteArray item = join(folder, "disk.img");
        const int fd = open(item.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        QCOMPARE(ftruncate(fd, qint64(4) << 30), 0);
        close(fd);
        const QByteArray archive = join(folder, "disk.zip");
        {
            WindowFixture f;
            QVERIFY(f.openAt(folder));
            QVERIFY(f.pick("disk.img"));
            f.actions->compress(f.picked);
            QTRY_VERIFY(unnamedFileOpenIn(folder));
            QVERIFY(!exists(archive));
        }
        QVERIFY(!unnamedFileOpenIn(folder));
        QCOMPARE(runForOutput("/bin/ls", {"-A", folder}), std::optional<QByteArray>("disk.img\n"));
    }
};

QTEST_MAIN(TestCompress)
#include "tst_compress.moc"
