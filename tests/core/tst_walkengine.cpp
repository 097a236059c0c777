// SPDX-License-Identifier: GPL-2.0-or-later
// The index a walk makes against the real du and find on real trees: the listing of the
// walked folder, and for every folder below it its total, its apparent total and the
// number of entries below it.
#include "LoopImage.h"
#include "TempTree.h"
#include "WalkRecorder.h"
#include "platform/FolderListing.h"
#include "platform/Paths.h"

#include <QProcess>
#include <QStandardPaths>
#include <dirent.h>

using namespace temptree;

namespace {

// du itself, "--" before the operand: the reference every number is held to. -H, as a
// walk takes the path asked for where a link leads.
qint64 du(const QByteArray& path, const QList<QByteArray>& options = {"-skH"}) {
    const auto out = runForOutput("/usr/bin/du", options + QList<QByteArray>{"--", path});
    const qint64 number = out ? out->left(out->indexOf('\t')).toLongLong() : -1;
    return options.contains("-B1") ? number : number * 1024;
}

qint64 duApparent(const QByteArray& path) {
    return du(path, {"-sH", "--apparent-size", "-B1"});
}

// Entries below the folder, as find counts them.
qint64 findCount(const QByteArray& path) {
    return runForOutput("/usr/bin/find", {"-H", path, "-mindepth", "1", "-printf", "x"})
        .value_or("")
        .size();
}

struct Listed {
    QByteArray name;
    ItemKind kind;
    qint64 bytes;
};

// The folder's entries as readdir and lstat give them.
std::vector<Listed> expectedListing(const QByteArray& folder) {
    std::vector<Listed> entries;
    DIR* dir = opendir(folder.constData());
    while (const dirent* entry = dir ? readdir(dir) : nullptr) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        struct stat st {};
        const bool known = lstat(join(folder, name).constData(), &st) == 0;
        entries.push_back({name, known ? kindOfMode(st.st_mode) : ItemKind::File,
                           known && !S_ISDIR(st.st_mode) ? qint64(st.st_blocks) * 512 : -1});
    }
    if (dir)
        closedir(dir);
    return entries;
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
        makeItems(folder, {"a", "b", "b/deeper", "b/deeper/down"}, {{"a/f", 300000}});
        makeLink(join(folder, "a/f"), join(folder, "b/deeper/g"), true);
        makeLink(join(folder, "a/f"), join(folder, "b/deeper/down/g2"), true);
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
        // Into the index in several runs, not one.
        for (int i = 0; i < 3000; ++i)
            writeFile(join(folder, "f" + QByteArray::number(i)), 0);
        makeItems(folder, {"sub"}, {{"sub/x", 9000}});
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

bool containsKernelFileSystem(const SizeIndex& index, EntryId folder) {
    for (const EntryId child : index.children(folder))
        if (index.isFolder(child) &&
            ((index.state(child) & KernelFileSystem) || containsKernelFileSystem(index, child)))
            return true;
    return false;
}

// What a walk put into the index, held against readdir, lstat, du and find: the walked
// folder's listing, and every folder's total (allocated and apparent) and count of
// entries below it. Folders named in `apart` are not held to du (see bindMountLoops).
void checkAgainstDu(const SizeIndex& index, const QByteArray& folder, bool counts = true,
                    const QByteArrayList& apart = {}) {
    const std::vector<Listed> expected = expectedListing(folder);
    const std::vector<EntryId> listed = index.children(index.root());
    QCOMPARE(listed.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        QCOMPARE(index.name(listed[i]), expected[i].name);
        QCOMPARE(index.kind(listed[i]), expected[i].kind);
        if (expected[i].bytes >= 0)
            QCOMPARE(index.allocated(listed[i]), expected[i].bytes);
    }
    std::vector<EntryId> folders{index.root()};
    while (!folders.empty()) {
        const EntryId id = folders.back();
        folders.pop_back();
        const QByteArray path = index.pathOf(id);
        QVERIFY2(index.state(id) & Measured, path.constData());
        // du takes no path longer than the kernel does.
        if (!apart.contains(lastPathComponent(path)) && path.size() < PATH_MAX) {
            QVERIFY2(index.allocated(id) == du(path), path.constData());
            // Kernel file systems are not entered: their files' lengths are not counted.
            if (!containsKernelFileSystem(index, id))
                QVERIFY2(index.apparent(id) == duApparent(path), path.constData());
            if (counts && !(index.state(id) & Unreadable))
                QVERIFY2(qint64(index.itemsBelow(id)) == findCount(path), path.constData());
        }
        for (const EntryId child : index.children(id))
            if (index.isFolder(child) && !(index.state(child) & (Loop | KernelFileSystem)))
                folders.push_back(child);
    }
}

void walkMatchesDu(const QByteArray& folder, bool countItems = true) {
    Walker walker;
    QStringList problems;
    const auto index = walkIntoIndex(walker, folder, {}, &problems);
    QVERIFY(index);
    QCOMPARE(problems, QStringList());
    checkAgainstDu(*index, folder, countItems);
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
        QTest::addColumn<QByteArray>("tree");
        for (const char* tree :
             {"files and folders", "hard links within one child", "hard links across children",
              "sparse files", "symbolic links", "awkward names", "empty folder", "empty children",
              "deep chain", "many children", "three thousand entries", "link to the folder",
              "a file, not a folder"})
            QTest::newRow(tree) << QByteArray(tree);
    }
    // A tree that has an item "walked" is walked there: a link to a folder is measured
    // where it leads, links below it stay links; a path that is not a folder lists nothing.
    void matchesDu() {
        QFETCH(QByteArray, tree);
        const QByteArray folder = tmp.freshFolder();
        buildTree(tree, folder);
        if (QTest::currentTestFailed())
            return;
        const QByteArray walked = join(folder, "walked");
        walkMatchesDu(statBlocksBytes(walked) >= 0 ? walked : folder);
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
            // The folders that cannot be read are marked, and so are those above them.
            Walker walker;
            const auto index = walkIntoIndex(walker, given);
            QVERIFY(index && index->unreadableBelow(index->root()) == 3);
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
        // vanishes under it, and processes come and go.
        makeDir(join(folder, "sys"));
        Mount sys;
        if (!sys.make({"-t", "sysfs", "sysfs"}, join(folder, "sys")))
            QSKIP("no sysfs can be mounted here");
        walkMatchesDu(folder, false);
        // Volumes inside left out, as du -skx leaves them out; their rows keep no size.
        Walker walker;
        const auto index = walkIntoIndex(walker, folder, {false});
        QVERIFY(index);
        QCOMPARE(index->allocated(index->root()), du(folder, {"-skxH"}));
        QCOMPARE(index->apparent(index->root()), du(folder, {"-sxH", "--apparent-size", "-B1"}));
        for (const EntryId child : index->children(index->root()))
            if (index->name(child) == "walked")
                QCOMPARE(index->state(child) & (OtherVolume | NotEntered),
                         quint16(OtherVolume | NotEntered));
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
        walkMatchesDu(folder, false);
        walkMatchesDu(join(folder, "squash"));
    }

    // A folder met again below itself (a bind mount) is not entered again: the walked
    // folder's total is du's. A folder in between counts less than its own du, which
    // enters the loop once, not knowing the folder above: the index is one tree.
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
        Walker walker;
        const auto index = walkIntoIndex(walker, folder);
        QVERIFY(index);
        checkAgainstDu(*index, folder, false, {"a"});
    }
};

QTEST_GUILESS_MAIN(TestWalkEngine)
#include "tst_walkengine.moc"
