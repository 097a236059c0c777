// Both measuring engines against the real du on real trees: every child's total, the
// folder's total and the listing itself.
#include "LoopImage.h"
#include "TempTree.h"
#include "WalkRecorder.h"
#include "core/DuEngine.h"
#include "core/FolderListing.h"
#include "core/FolderWalk.h"
#include "core/InProcessEngine.h"
#include "core/Node.h"

#include <QProcess>
#include <QStandardPaths>
#include <QThreadPool>
#include <dirent.h>
#include <sys/stat.h>

using namespace temptree;

namespace {

// du itself, "--" before the operand: the reference every number is held to.
qint64 du(const QByteArray& path, const QByteArray& option = {}) {
    QList<QByteArray> args{"-sk"};
    if (!option.isEmpty())
        args << option;
    args << "--" << path;
    const auto out = runForOutput("/usr/bin/du", args);
    return out ? out->left(out->indexOf('\t')).toLongLong() * 1024 : -1;
}

// The folder's entries as readdir and lstat give them.
std::vector<WalkEntry> expectedListing(const QByteArray& folder) {
    std::vector<WalkEntry> entries;
    DIR* dir = opendir(folder.constData());
    if (!dir)
        return entries;
    while (const dirent* entry = readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        struct stat st {};
        const bool known = lstat(join(folder, name).constData(), &st) == 0;
        const bool isDir = known && S_ISDIR(st.st_mode);
        entries.push_back({name, isDir,
                           isDir   ? -1
                           : known ? qint64(st.st_blocks) * 512
                                   : 0,
                           known ? kindOfMode(st.st_mode) : ItemKind::File});
    }
    closedir(dir);
    return entries;
}

std::unique_ptr<MeasureEngine> makeEngine(const QByteArray& kind, QThreadPool* pool) {
    if (kind == "du")
        return std::make_unique<DuEngine>(pool);
    return std::make_unique<InProcessEngine>(pool, InProcessEngine::defaultWorkers());
}

qint64 measure(MeasureEngine& engine, const QByteArray& path, bool isDir) {
    struct Result {
        std::mutex lock;
        qint64 bytes = -1;
    };
    auto result = std::make_shared<Result>();
    engine.measureItem(path, isDir, [result](qint64 bytes) {
        std::lock_guard guard(result->lock);
        result->bytes = bytes;
    });
    qint64 bytes = -1;
    (void)QTest::qWaitFor(
        [&] {
            std::lock_guard guard(result->lock);
            bytes = result->bytes;
            return bytes >= 0;
        },
        300000);
    return bytes;
}

void makeLink(const QByteArray& target, const QByteArray& link) {
    QVERIFY(symlink(target.constData(), link.constData()) == 0);
}

void makeHardLink(const QByteArray& existing, const QByteArray& link) {
    QVERIFY(::link(existing.constData(), link.constData()) == 0);
}

// Allocated only around `at`: the rest of its length is a hole.
void makeSparse(const QByteArray& path, qint64 length, qint64 at) {
    const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    QVERIFY(fd >= 0);
    QVERIFY(ftruncate(fd, length) == 0);
    QVERIFY(pwrite(fd, "data", 4, at) == 4);
    QVERIFY(fsync(fd) == 0);
    close(fd);
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
        makeDir(join(folder, "a"));
        makeDir(join(folder, "a/sub"));
        writeFile(join(folder, "a/one"), 1);
        writeFile(join(folder, "a/sub/odd"), 100001);
        writeFile(join(folder, "plain"), 5000);
        makeDir(join(folder, "b"));
        writeFile(join(folder, "b/big"), 1 << 20);
    } else if (kind == "hard links within one child") {
        makeDir(join(folder, "a"));
        makeDir(join(folder, "a/sub"));
        writeFile(join(folder, "a/f"), 300000);
        makeHardLink(join(folder, "a/f"), join(folder, "a/sub/g"));
        makeHardLink(join(folder, "a/f"), join(folder, "a/h"));
    } else if (kind == "hard links across children") {
        makeDir(join(folder, "a"));
        makeDir(join(folder, "b"));
        makeDir(join(folder, "b/deeper"));
        writeFile(join(folder, "a/f"), 300000);
        makeHardLink(join(folder, "a/f"), join(folder, "b/deeper/g"));
        makeHardLink(join(folder, "a/f"), join(folder, "r"));
        // The rule matters here: the folder counts the file once, each child once too.
        QVERIFY(du(join(folder, "a")) + du(join(folder, "b")) > du(folder));
    } else if (kind == "sparse files") {
        makeDir(join(folder, "a"));
        makeSparse(join(folder, "a/holes"), 64 << 20, 32 << 20);
        makeSparse(join(folder, "top"), 16 << 20, 0);
        QVERIFY(du(join(folder, "a")) < (1 << 20));
    } else if (kind == "symbolic links") {
        makeDir(join(folder, "a"));
        writeFile(join(folder, "a/big"), 1 << 20);
        makeDir(join(folder, "b"));
        makeLink("../a", join(folder, "b/toA"));
        makeLink("nowhere", join(folder, "b/dangling"));
        makeLink("a", join(folder, "toA"));
        makeLink(QByteArray(300, 'x'), join(folder, "dangling"));
    } else if (kind == "awkward names") {
        for (const char* name : {"bad\xff\xfe", "-rf", "new\nline", "--"}) {
            makeDir(join(folder, name));
            writeFile(join(folder, QByteArray(name) + "/x"), 20000);
        }
        writeFile(join(folder, "--help"), 7000);
        writeFile(join(folder, "caf\xe9"), 3000);
    } else if (kind == "\"._\" names") {
        writeFile(join(folder, "._shown"), 40000);
        makeDir(join(folder, "._folder"));
        writeFile(join(folder, "._folder/inside"), 90000);
        makeDir(join(folder, "shown"));
        writeFile(join(folder, "shown/._inside"), 9000);
        QCOMPARE(mkfifo(join(folder, "._fifo").constData(), 0600), 0);
    } else if (kind == "empty folder") {
    } else if (kind == "empty children") {
        makeDir(join(folder, "e1"));
        makeDir(join(folder, "e2"));
        makeDir(join(folder, "e2/e3"));
    } else if (kind == "deep chain") {
        makeDir(join(folder, "chain"));
        makeChain(join(folder, "chain"), 300, QByteArray(24, 'd'));
        writeFile(join(folder, "beside"), 100);
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
void checkAgainstDu(WalkRecorder& walk, const QByteArray& folder,
                    const QByteArray& totalOption = {}) {
    QCOMPARE(walk.problems(), QStringList());
    const std::vector<WalkEntry> expected = expectedListing(folder);
    QCOMPARE(walk.entries.size(), expected.size());
    size_t folders = 0;
    for (size_t i = 0; i < expected.size(); ++i) {
        const WalkEntry& entry = walk.entries[i];
        QCOMPARE(entry.name, expected[i].name);
        QCOMPARE(entry.isDir, expected[i].isDir);
        QCOMPARE(entry.kind, expected[i].kind);
        if (!entry.isDir) {
            QCOMPARE(entry.bytes, expected[i].bytes);
            continue;
        }
        ++folders;
        QVERIFY2(walk.childSizes.count(i), entry.name.constData());
        QCOMPARE(walk.childSizes[i], du(join(folder, entry.name)));
    }
    QCOMPARE(walk.childSizes.size(), folders);
    QCOMPARE(walk.total, du(folder, totalOption));
}

void walkMatchesDu(const QByteArray& engineKind, const QByteArray& folder) {
    QThreadPool pool;
    pool.setMaxThreadCount(6);
    const auto engine = makeEngine(engineKind, &pool);
    const auto walk = walkToTheEnd(*engine, folder);
    QVERIFY(walk);
    checkAgainstDu(*walk, folder);
}

// A mount inside the tree, undone when the test ends.
class Mount {
public:
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

private:
    QByteArray point;
};

const QByteArrayList engineKinds{"in-process", "du"};

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
              "sparse files", "symbolic links", "awkward names", "\"._\" names", "empty folder",
              "empty children", "deep chain", "many children"})
            for (const QByteArray& engine : engineKinds)
                QTest::addRow("%s, %s engine", tree, engine.constData())
                    << engine << QByteArray(tree);
    }
    void matchesDu() {
        QFETCH(QByteArray, engine);
        QFETCH(QByteArray, tree);
        const QByteArray folder = tmp.freshFolder();
        buildTree(tree, folder);
        if (QTest::currentTestFailed())
            return;
        walkMatchesDu(engine, folder);
    }

    // The folder asked for may be a link to a folder: it is measured where it leads, as
    // du -H measures it; links below it stay links.
    void linkToTheFolderIsFollowed() {
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "real"));
        buildTree("files and folders", join(folder, "real"));
        makeLink("real", join(folder, "link"));
        for (const QByteArray& kind : engineKinds) {
            QThreadPool pool;
            const auto engine = makeEngine(kind, &pool);
            const auto walk = walkToTheEnd(*engine, join(folder, "link"));
            QVERIFY(walk);
            checkAgainstDu(*walk, join(folder, "link"), "-H");
            QCOMPARE(walk->total, du(join(folder, "link"), "-L"));
            QVERIFY(walk->total > du(join(folder, "link")));
        }
    }

    // A path that is not a folder lists nothing; its total is what du says of it.
    void walkOfAFile() {
        const QByteArray file = join(tmp.freshFolder(), "file");
        writeFile(file, 70000);
        for (const QByteArray& kind : engineKinds) {
            QThreadPool pool;
            const auto engine = makeEngine(kind, &pool);
            const auto walk = walkToTheEnd(*engine, file);
            QVERIFY(walk);
            QCOMPARE(walk->problems(), QStringList());
            QVERIFY(walk->entries.empty());
            QCOMPARE(walk->total, du(file));
        }
    }

    void measureItem_data() {
        QTest::addColumn<QByteArray>("engine");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("isDir");
        QTest::addColumn<QByteArray>("duOption");
        for (const QByteArray& engine : engineKinds) {
            const char* e = engine.constData();
            QTest::addRow("%s: folder", e) << engine << QByteArray("tree") << true << QByteArray();
            QTest::addRow("%s: file", e)
                << engine << QByteArray("tree/b/big") << false << QByteArray();
            QTest::addRow("%s: link as itself", e)
                << engine << QByteArray("linkToTree") << false << QByteArray();
            QTest::addRow("%s: missing folder", e)
                << engine << QByteArray("gone") << true << QByteArray();
        }
        for (const QByteArray& engine : engineKinds)
            QTest::addRow("%s: link to a folder, followed", engine.constData())
                << engine << QByteArray("linkToTree") << true << QByteArray("-H");
    }
    void measureItem() {
        QFETCH(QByteArray, engine);
        QFETCH(QByteArray, name);
        QFETCH(bool, isDir);
        QFETCH(QByteArray, duOption);
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "tree"));
        buildTree("files and folders", join(folder, "tree"));
        makeLink("tree", join(folder, "linkToTree"));
        const QByteArray path = join(folder, name);

        QThreadPool pool;
        const auto measuring = makeEngine(engine, &pool);
        const qint64 bytes = measure(*measuring, path, isDir);
        if (name == "gone")
            QCOMPARE(bytes, qint64(0));
        else if (!isDir)
            QCOMPARE(bytes, statBlocksBytes(path));
        else
            QCOMPARE(bytes, du(path, duOption));
    }

    // Unreadable folders count their own size and nothing beneath, as du counts them.
    // Root reads everything, so there the comparison runs again as an unprivileged user.
    void unreadableFolders() {
        const QByteArray given = qgetenv("SIZELOOM_UNREADABLE_TREE");
        if (!given.isEmpty()) {
            QVERIFY(geteuid() != 0);
            QVERIFY2(!opendir(join(given, "closed").constData()), "the folder is readable");
            for (const QByteArray& kind : engineKinds) {
                walkMatchesDu(kind, given);
                walkMatchesDu(kind, join(given, "open"));
            }
            return;
        }
        const QByteArray folder = tmp.freshFolder();
        buildTree("files and folders", folder);
        for (const char* name : {"closed", "listOnly", "open", "open/deeper", "open/deeper/shut"})
            makeDir(join(folder, name));
        for (const char* name : {"closed/x", "listOnly/y", "open/z", "open/deeper/shut/w"})
            writeFile(join(folder, name), 60000);
        makeDir(join(folder, "closed/sub"));
        QVERIFY(chmod(join(folder, "closed").constData(), 0) == 0);
        QVERIFY(chmod(join(folder, "open/deeper/shut").constData(), 0) == 0);
        // Its names can be read, but nothing in it can be looked at.
        QVERIFY(chmod(join(folder, "listOnly").constData(), 0644) == 0);
        if (geteuid() != 0) {
            for (const QByteArray& kind : engineKinds)
                walkMatchesDu(kind, folder);
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
        QVERIFY2(run.exitStatus() == QProcess::NormalExit && run.exitCode() == 0,
                 output.constData());
        QVERIFY2(output.contains("PASS   : TestWalkEngine::unreadableFolders"), output.constData());
    }

    // Other file systems mounted inside are counted as du counts them; kernel file
    // systems whose entries hold no blocks add nothing.
    void mountedFileSystemsInside() {
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, "walked");
        writeFile(join(image.mountPoint, "inside"), 200000);
        makeDir(join(image.mountPoint, "folder"));
        writeFile(join(image.mountPoint, "folder/more"), 50000);
        const QByteArray folder = deletingLastPathComponent(image.mountPoint);
        // sysfs rather than proc: du gives up without a total when a process's folder
        // vanishes under it, and the du engine's own processes come and go.
        makeDir(join(folder, "sys"));
        Mount sys;
        if (!sys.make({"-t", "sysfs", "sysfs"}, join(folder, "sys")))
            QSKIP("no sysfs can be mounted here");
        for (const QByteArray& kind : engineKinds)
            walkMatchesDu(kind, folder);
    }

    void roundsUpToWholeKibOnce_data() {
        QTest::addColumn<qint64>("blocks");
        QTest::addColumn<qint64>("bytes");
        QTest::newRow("nothing") << qint64(0) << qint64(0);
        QTest::newRow("half a KiB") << qint64(1) << qint64(1024);
        QTest::newRow("one KiB") << qint64(2) << qint64(1024);
        QTest::newRow("one and a half") << qint64(3) << qint64(2048);
        QTest::newRow("a whole 4 KiB block") << qint64(8) << qint64(4096);
    }
    void roundsUpToWholeKibOnce() {
        QFETCH(qint64, blocks);
        QFETCH(qint64, bytes);
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
        makeDir(join(source, "odd"));
        for (const char* name : {"odd/a", "odd/b", "odd/c", "top"})
            writeFile(join(source, name), 1);
        const QByteArray image = join(tmp.bytes(), "odd.sqfs");
        runForOutput(QFile::encodeName(mksquashfs), {source, image, "-noappend", "-quiet"});
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "squash"));
        Mount squash;
        if (!squash.make({"-t", "squashfs", "-o", "loop,ro", image}, join(folder, "squash")))
            QSKIP("a squashfs image cannot be mounted here");
        QCOMPARE(statBlocksBytes(join(folder, "squash/top")), qint64(512));
        for (const QByteArray& kind : engineKinds)
            walkMatchesDu(kind, folder);
        walkMatchesDu("in-process", join(folder, "squash"));
    }

    // A folder met again below itself (a bind mount) is not entered twice; a child's
    // total still counts what that child's own du finds.
    void bindMountLoops() {
        if (geteuid() != 0)
            QSKIP("bind mounts need root");
        const QByteArray folder = tmp.freshFolder();
        buildTree("files and folders", folder);
        makeDir(join(folder, "a/loop"));
        makeDir(join(folder, "self"));
        Mount deep, top;
        if (!deep.make({"--bind", folder}, join(folder, "a/loop")) ||
            !top.make({"--bind", folder}, join(folder, "self")))
            QSKIP("bind mounts are refused here");
        for (const QByteArray& kind : engineKinds)
            walkMatchesDu(kind, folder);
    }
};

QTEST_GUILESS_MAIN(TestWalkEngine)
#include "tst_walkengine.moc"
