// SPDX-License-Identifier: GPL-2.0-or-later
// Both measuring engines against the real du on real trees: every child's total, the
// folder's total and the listing itself.
#include "LoopImage.h"
#include "TempTree.h"
#include "WalkRecorder.h"
#include "core/FolderWalk.h"
#include "platform/FolderListing.h"

#include <QProcess>
#include <QStandardPaths>
#include <dirent.h>

using namespace temptree;

namespace {

// du itself, "--" before the operand: the reference every number is held to. -H, as a
// walk's total and a measured item take the path asked for where a link leads.
qint64 du(const QByteArray& path) {
    const auto out = runForOutput("/usr/bin/du", {"-skH", "--", path});
    return out ? out->left(out->indexOf('\t')).toLongLong() * 1024 : -1;
}

// The folder's entries as readdir and lstat give them.
std::vector<WalkEntry> expectedListing(const QByteArray& folder) {
    std::vector<WalkEntry> entries;
    DIR* dir = opendir(folder.constData());
    while (const dirent* entry = dir ? readdir(dir) : nullptr) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        struct stat st {};
        const bool known = lstat(join(folder, name).constData(), &st) == 0;
        const bool isDir = known && S_ISDIR(st.st_mode);
        entries.push_back({name, isDir, isDir ? -1 : qint64(st.st_blocks) * 512,
                           known ? kindOfMode(st.st_mode) : ItemKind::File});
    }
    if (dir)
        closedir(dir);
    return entries;
}

qint64 measure(MeasureEngine& engine, const QByteArray& path, bool isDir) {
    const auto bytes = std::make_shared<std::atomic<qint64>>(-1);
    engine.measureItem(path, isDir, [bytes](qint64 measured) { *bytes = measured; });
    (void)QTest::qWaitFor([&] { return *bytes >= 0; }, 300000);
    return *bytes;
}

// Folders, then files of the given sizes, inside `folder`.
void makeItems(const QByteArray& folder, const QByteArrayList& folders,
               const QList<std::pair<QByteArray, qint64>>& files = {}) {
    for (const QByteArray& name : folders)
        makeDir(join(folder, name));
    for (const auto& [name, bytes] : files)
        writeFile(join(folder, name), bytes);
}

void makeLink(const QByteArray& target, const QByteArray& link, bool hard = false) {
    const int made = hard ? ::link(target.constData(), link.constData())
                          : symlink(target.constData(), link.constData());
    QVERIFY(made == 0);
}

// `depth` folders inside each other, each with a small file, made one level at a time:
// the whole path is far longer than the kernel takes in one call.
void makeChain(const QByteArray& top, int depth, const QByteArray& name) {
    int fd = open(top.constData(), O_RDONLY | O_DIRECTORY);
    QVERIFY(fd >= 0);
    for (int level = 0; level < depth; ++level) {
        QVERIFY(mkdirat(fd, name.constData(), 0755) == 0);
        const int file = openat(fd, "f", O_WRONLY | O_CREAT, 0644);
        QVERIFY(file >= 0);
        QVERIFY(write(file, QByteArray(5000, 'c').constData(), 5000) == 5000);
        close(file);
        const int next = openat(fd, name.constData(), O_RDONLY | O_DIRECTORY);
        close(fd);
        fd = next;
        QVERIFY(fd >= 0);
    }
    close(fd);
}

void buildTree(const QByteArray& kind, const QByteArray& folder) {
    if (kind == "files and folders") {
        makeItems(folder, {"a", "a/sub", "b"},
                  {{"a/one", 1}, {"a/sub/odd", 100001}, {"plain", 5000}, {"b/big", 1 << 20}});
    } else if (kind == "hard links within one child") {
        makeItems(folder, {"a", "a/sub"}, {{"a/f", 300000}});
        makeLink(join(folder, "a/f"), join(folder, "a/sub/g"), true);
        makeLink(join(folder, "a/f"), join(folder, "a/h"), true);
    } else if (kind == "hard links across children") {
        makeItems(folder, {"a", "b", "b/deeper"}, {{"a/f", 300000}});
        makeLink(join(folder, "a/f"), join(folder, "b/deeper/g"), true);
        makeLink(join(folder, "a/f"), join(folder, "r"), true);
        // The rule matters here: the folder counts the file once, each child once too.
        QVERIFY(du(join(folder, "a")) + du(join(folder, "b")) > du(folder));
    } else if (kind == "sparse files") {
        // A few bytes written, then lengthened by a hole.
        makeItems(folder, {"a"}, {{"a/holes", 4}, {"top", 4}});
        QVERIFY(truncate(join(folder, "a/holes").constData(), 64 << 20) == 0);
        QVERIFY(truncate(join(folder, "top").constData(), 16 << 20) == 0);
        QVERIFY(du(join(folder, "a")) < (1 << 20));
    } else if (kind == "symbolic links") {
        makeItems(folder, {"a", "b"}, {{"a/big", 1 << 20}});
        makeLink("../a", join(folder, "b/toA"));
        makeLink("nowhere", join(folder, "b/dangling"));
        makeLink("a", join(folder, "toA"));
        makeLink(QByteArray(300, 'x'), join(folder, "dangling"));
    } else if (kind == "awkward names") {
        // "._" names are ordinary items here, counted like any other.
        for (const char* name : {"bad\xff\xfe", "-rf", "new\nline", "--", "._folder"})
            makeItems(folder, {name}, {{QByteArray(name) + "/._x", 20000}});
        makeItems(folder, {}, {{"--help", 7000}, {"caf\xe9", 3000}, {"._shown", 40000}});
        QCOMPARE(mkfifo(join(folder, "._fifo").constData(), 0600), 0);
    } else if (kind == "empty folder") {
    } else if (kind == "empty children") {
        makeItems(folder, {"e1", "e2", "e2/e3"});
    } else if (kind == "deep chain") {
        makeItems(folder, {"chain"}, {{"beside", 100}});
        makeChain(join(folder, "chain"), 300, QByteArray(24, 'd'));
    } else if (kind == "link to the folder") {
        makeDir(join(folder, "real"));
        buildTree("symbolic links", join(folder, "real"));
        makeLink("real", join(folder, "walked"));
    } else if (kind == "a file, not a folder") {
        writeFile(join(folder, "walked"), 70000);
    } else if (kind == "three thousand entries") {
        // Arrives in batches, not in one at the end: WalkRecorder takes none over 1000.
        for (int i = 0; i < 3000; ++i)
            writeFile(join(folder, "f" + QByteArray::number(i)), 0);
    } else if (kind == "many children") {
        for (int i = 0; i < 40; ++i) {
            const QByteArray child = join(folder, "c" + QByteArray::number(i));
            makeDir(child);
            for (int j = 0; j < i % 5; ++j) {
                const QByteArray sub = join(child, "s" + QByteArray::number(j));
                makeDir(sub);
                for (int k = 0; k < 4; ++k)
                    writeFile(join(sub, "f" + QByteArray::number(k)), (i * 7 + j * 3 + k) * 1000);
            }
            writeFile(join(folder, "file" + QByteArray::number(i)), i * 512);
        }
    } else {
        QFAIL("unknown tree");
    }
}

// Everything a walk delivered, held against readdir, lstat and du.
void checkAgainstDu(WalkRecorder& walk, const QByteArray& folder) {
    QCOMPARE(walk.problems(), QStringList());
    const std::vector<WalkEntry> expected = expectedListing(folder);
    QCOMPARE(walk.entries.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        const WalkEntry& entry = walk.entries[i];
        QCOMPARE(entry.name, expected[i].name);
        QCOMPARE(entry.isDir, expected[i].isDir);
        QCOMPARE(entry.kind, expected[i].kind);
        if (!entry.isDir) {
            QCOMPARE(entry.bytes, expected[i].bytes);
            continue;
        }
        QVERIFY2(walk.childSizes.count(i), entry.name.constData());
        QCOMPARE(walk.childSizes[i], du(join(folder, entry.name)));
    }
    QCOMPARE(walk.total, du(folder));
}

const QByteArrayList engineKinds{"in-process", "du"};

void walkMatchesDu(const QByteArray& folder, const QByteArrayList& kinds = engineKinds) {
    for (const QByteArray& kind : kinds) {
        Engine engine(kind);
        const auto walk = walkToTheEnd(*engine, folder);
        QVERIFY2(walk, kind.constData());
        checkAgainstDu(*walk, folder);
        // Measured on its own, as after a change on disk, it comes to the same total.
        QCOMPARE(measure(*engine, folder, true), walk->total);
    }
}

// A mount inside the tree, undone when the test ends.
struct Mount {
    QByteArray point;
    bool make(const QList<QByteArray>& args, const QByteArray& target) {
        runForOutput("/usr/bin/mount", args + QList<QByteArray>{"--", target});
        QFile mounts("/proc/self/mounts");
        if (mounts.open(QIODevice::ReadOnly) && mounts.readAll().contains(" " + target + " "))
            point = target;
        return !point.isEmpty();
    }
    ~Mount() {
        if (!point.isEmpty())
            runForOutput("/usr/bin/umount", {"--", point});
    }
};

} // namespace

class TestWalkEngine : public QObject {
    Q_OBJECT
    Dir tmp;

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void matchesDu_data() {
        QTest::addColumn<QByteArray>("engine");
        QTest::addColumn<QByteArray>("tree");
        for (const char* tree :
             {"files and folders", "hard links within one child", "hard links across children",
              "sparse files", "symbolic links", "awkward names", "empty folder", "empty children",
              "deep chain", "many children", "three thousand entries", "link to the folder",
              "a file, not a folder"})
            for (const QByteArray& engine : engineKinds)
                QTest::addRow("%s, %s engine", tree, engine.constData())
                    << engine << QByteArray(tree);
    }
    // A tree that has an item "walked" is walked there: a link to a folder is measured
    // where it leads, links below it stay links; a path that is not a folder lists nothing.
    void matchesDu() {
        QFETCH(QByteArray, engine);
        QFETCH(QByteArray, tree);
        const QByteArray folder = tmp.freshFolder();
        buildTree(tree, folder);
        if (QTest::currentTestFailed())
            return;
        const QByteArray walked = join(folder, "walked");
        walkMatchesDu(statBlocksBytes(walked) >= 0 ? walked : folder, {engine});
    }

    // An item measured on its own that is not a folder counts its own blocks, a link as
    // itself; one that is gone counts nothing. Folders are measured in every walk above.
    void measureItem() {
        const QByteArray folder = tmp.freshFolder();
        buildTree("symbolic links", folder);
        for (const QByteArray& kind : engineKinds) {
            Engine engine(kind);
            for (const QByteArray& item : {join(folder, "a/big"), join(folder, "toA")})
                QCOMPARE(measure(*engine, item, false), statBlocksBytes(item));
            QCOMPARE(measure(*engine, join(folder, "gone"), true), qint64(0));
        }
    }

    // Unreadable folders count their own size and nothing beneath, as du counts them.
    // Root reads everything, so there the comparison runs again as an unprivileged user.
    void unreadableFolders() {
        const QByteArray given = qgetenv("SIZELOOM_UNREADABLE_TREE");
        if (!given.isEmpty()) {
            QVERIFY(geteuid() != 0);
            QVERIFY2(!opendir(join(given, "closed").constData()), "the folder is readable");
            walkMatchesDu(given);
            walkMatchesDu(join(given, "open"));
            return;
        }
        const QByteArray folder = tmp.freshFolder();
        buildTree("files and folders", folder);
        makeItems(folder, {"closed", "closed/sub", "listOnly", "open", "open/deeper"},
                  {{"closed/x", 60000}, {"listOnly/y", 60000}, {"open/z", 60000}});
        makeItems(folder, {"open/deeper/shut"}, {{"open/deeper/shut/w", 60000}});
        QVERIFY(chmod(join(folder, "closed").constData(), 0) == 0);
        QVERIFY(chmod(join(folder, "open/deeper/shut").constData(), 0) == 0);
        // Its names can be read, but nothing in it can be looked at.
        QVERIFY(chmod(join(folder, "listOnly").constData(), 0644) == 0);
        if (geteuid() != 0) {
            walkMatchesDu(folder);
            return;
        }
        QVERIFY(chmod(tmp.bytes().constData(), 0755) == 0);
        QProcess run;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("SIZELOOM_UNREADABLE_TREE", QFile::decodeName(folder));
        run.setProcessEnvironment(env);
        run.setProcessChannelMode(QProcess::MergedChannels);
        run.start("/usr/bin/setpriv",
                  {"--reuid=65534", "--regid=65534", "--clear-groups", "--",
                   QCoreApplication::applicationFilePath(), "unreadableFolders"});
        if (!run.waitForStarted())
            QSKIP("setpriv cannot run here, so no unprivileged user can be had");
        QVERIFY(run.waitForFinished(300000));
        const QByteArray output = run.readAll();
        if (output.contains("failed to execute"))
            QSKIP("the test program cannot be run as an unprivileged user here");
        QVERIFY2(output.contains("PASS   : TestWalkEngine::unreadableFolders"), output.constData());
    }

    // Other file systems mounted inside are counted as du counts them; kernel file
    // systems whose entries hold no blocks add nothing.
    void mountedFileSystemsInside() {
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, "walked");
        makeItems(image.mountPoint, {"folder"}, {{"inside", 200000}, {"folder/more", 50000}});
        const QByteArray folder = deletingLastPathComponent(image.mountPoint);
        // sysfs rather than proc: du gives up without a total when a process's folder
        // vanishes under it, and the du engine's own processes come and go.
        makeDir(join(folder, "sys"));
        Mount sys;
        if (!sys.make({"-t", "sysfs", "sysfs"}, join(folder, "sys")))
            QSKIP("no sysfs can be mounted here");
        walkMatchesDu(folder);
    }

    // 512-byte blocks to bytes, as du -sk gives them.
    void roundsUpToWholeKibOnce() {
        const std::pair<qint64, qint64> cases[]{{0, 0}, {1, 1024}, {2, 1024}, {3, 2048}, {8, 4096}};
        for (const auto& [blocks, bytes] : cases)
            QCOMPARE(duTotalBytes(blocks), bytes);
    }

    // A file system that allocates in 512-byte units (squashfs sizes a file by its
    // length): du rounds the sum, not each file.
    void oddBlockCountsAgainstDu() {
        if (geteuid() != 0)
            QSKIP("mounting an image needs root");
        const QString mksquashfs =
            QStandardPaths::findExecutable("mksquashfs", {"/usr/bin", "/usr/sbin", "/sbin"});
        if (mksquashfs.isEmpty())
            QSKIP("mksquashfs (squashfs-tools) is not installed");
        const QByteArray source = tmp.freshFolder();
        makeItems(source, {"odd"}, {{"odd/a", 1}, {"odd/b", 1}, {"odd/c", 1}, {"top", 1}});
        const QByteArray image = join(tmp.bytes(), "odd.sqfs");
        runForOutput(QFile::encodeName(mksquashfs), {source, image, "-noappend", "-quiet"});
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "squash"));
        Mount squash;
        if (!squash.make({"-t", "squashfs", "-o", "loop,ro", image}, join(folder, "squash")))
            QSKIP("a squashfs image cannot be mounted here");
        QCOMPARE(statBlocksBytes(join(folder, "squash/top")), qint64(512));
        walkMatchesDu(folder);
        walkMatchesDu(join(folder, "squash"), {"in-process"});
    }

    // A folder met again below itself (a bind mount) is not entered twice; a child's
    // total still counts what that child's own du finds.
    void bindMountLoops() {
        if (geteuid() != 0)
            QSKIP("bind mounts need root");
        const QByteArray folder = tmp.freshFolder();
        buildTree("files and folders", folder);
        makeItems(folder, {"a/loop", "self"});
        Mount deep, top;
        if (!deep.make({"--bind", folder}, join(folder, "a/loop")) ||
            !top.make({"--bind", folder}, join(folder, "self")))
            QSKIP("bind mounts are refused here");
        walkMatchesDu(folder);
    }
};

QTEST_GUILESS_MAIN(TestWalkEngine)
#include "tst_walkengine.moc"
