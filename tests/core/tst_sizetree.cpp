// SPDX-License-Identifier: GPL-2.0-or-later
// The size tree as the outline sees it: what a walk lists and measures, in what order
// the rows come, and the index at work afterwards: folders below shown without reading
// the disk again, a changed folder walked again in place, a walk stopped midway, and work
// for a folder opened before dropped.
#include "TempTree.h"
#include "core/LevelOrder.h"
#include "core/SizeTree.h"
#include "core/TreeDisplay.h"
#include "platform/DirectoryReader.h"
#include "platform/Paths.h"

#include <QSet>
#include <QSignalSpy>
#include <QThreadPool>
#include <algorithm>
#include <functional>

using namespace temptree;

namespace {

// A stand-in for the outline: shows the rows of the root and of the folders it is told
// to, and records what the tree asks of it.
struct Recorder : TreeDisplay {
    std::shared_ptr<const SizeIndex> index;
    EntryId root = kNoEntry;
    QSet<EntryId> withRows;
    QList<EntryId> rowRedraws, childRedraws;
    QList<std::pair<size_t, size_t>> appended; // (first, count) of the root's runs
    QList<std::vector<EntryId>> reorders;      // the root's
    std::function<void()> onFirstRows;

    void showNewRoot(const std::shared_ptr<const SizeIndex>& shown, EntryId top) override {
        index = shown;
        root = top;
        withRows = {top};
        appended.clear();
        reorders.clear();
    }
    bool isShown(EntryId folder) const override { return withRows.contains(folder); }
    bool hasRows(EntryId folder) const override { return withRows.contains(folder); }
    void rowsAppended(EntryId folder, size_t first, size_t count) override {
        if (folder == root)
            appended.append({first, count});
        if (const auto act = std::exchange(onFirstRows, {}))
            act();
    }
    void redrawRow(EntryId id) override { rowRedraws << id; }
    void redrawRowAndChildren(EntryId folder) override { childRedraws << folder; }
    void reorderChildren(EntryId folder, const std::vector<EntryId>& order) override {
        if (folder == root)
            reorders << order;
    }
    void dropChildren(EntryId) override {}
    void redrawAll() override {}
};

// The opened folder is measured, the tree's walks are over and what they sent is taken
// in.
bool settled(SizeTree& tree) {
    return QTest::qWaitFor(
               [&] {
                   return tree.index() && tree.index()->isMeasured(tree.root()) &&
                          !tree.isWalking();
               },
               120000) &&
           tree.workers().waitForDone(60000) && (QTest::qWait(20), true);
}

EntryId childNamed(const SizeIndex& index, EntryId folder, const QByteArray& name) {
    for (const EntryId child : index.children(folder))
        if (index.name(child) == name)
            return child;
    return kNoEntry;
}

QList<QByteArray> namesOf(const SizeIndex& index, const std::vector<EntryId>& ids) {
    QList<QByteArray> names;
    for (const EntryId id : ids)
        names << index.name(id);
    return names;
}

} // namespace

class TestSizeTree : public QObject {
    Q_OBJECT
    Dir tmp;

    QByteArray nested() {
        const QByteArray folder = tmp.freshFolder();
        for (const char* sub : {"a", "a/deep", "a/deep/er", "b"})
            makeDir(join(folder, sub));
        writeFile(join(folder, "a/deep/er/f"), 300000);
        writeFile(join(folder, "a/g"), 20000);
        writeFile(join(folder, "b/h"), 50000);
        return folder;
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void entriesAsTheFileSystemHasThem() {
        const QByteArray folder = tmp.freshFolder();
        // "._" names are ordinary files here, taking space like any other.
        for (const char* file : {"plain", ".hidden", "._plain", "caf\xe9"})
            writeFile(join(folder, file), 10);
        makeDir(join(folder, "sub"));
        makeDir(join(folder, "._sub"));
        QCOMPARE(symlink(join(folder, "sub").constData(), join(folder, "linkToSub").constData()),
                 0);
        QCOMPARE(mkfifo(join(folder, "pipe").constData(), 0600), 0);
        SizeTree tree;
        tree.open(folder);
        QVERIFY(settled(tree));
        const SizeIndex& index = *tree.index();
        QList<QByteArray> listed = namesOf(index, index.children(tree.root()));
        std::ranges::sort(listed);
        QCOMPARE(listed, (QList<QByteArray>{"._plain", "._sub", ".hidden", "caf\xe9", "linkToSub",
                                            "pipe", "plain", "sub"}));
        const QHash<QByteArray, ItemKind> kinds{{"sub", ItemKind::Folder},
                                                {"._sub", ItemKind::Folder},
                                                {"linkToSub", ItemKind::Link},
                                                {"pipe", ItemKind::Other}};
        for (const EntryId child : index.children(tree.root())) {
            // Only the real folders are folders; the link to one is not.
            const QByteArray name = index.name(child);
            QCOMPARE(index.kind(child), kinds.value(name, ItemKind::File));
            QCOMPARE(index.allocated(child), index.isFolder(child)
                                                 ? duBytes(join(folder, name))
                                                 : statBlocksBytes(join(folder, name)));
        }
        QCOMPARE(index.allocated(tree.root()), duBytes(folder));
    }

    // Sizes arrive in any order; the level is put in order once, largest first, ties in
    // the order they were listed; the rows of a large level come in runs.
    void rowsComeInRunsAndAreSortedOnce_data() {
        QTest::addColumn<int>("files");
        QTest::newRow("a few") << 7;
        QTest::newRow("fifty thousand") << 50000;
    }
    void rowsComeInRunsAndAreSortedOnce() {
        QFETCH(int, files);
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < files; ++i)
            writeFile(join(folder, "n" + QByteArray::number(i)),
                      i % 3 == 0 ? 40000 : (i % 5000 ? 0 : 4096 * (1 + i / 5000)));
        makeDir(join(folder, "dir"));
        writeFile(join(folder, "dir/inner"), 200000);
        SizeTree tree;
        Recorder outline;
        tree.setDisplay(&outline);
        tree.open(folder);
        QVERIFY(settled(tree));
        // Put in order over the turns of the event loop after its total came in, the
        // rows held back announced first.
        QTRY_COMPARE(outline.reorders.size(), 1);
        const SizeIndex& index = *tree.index();
        size_t next = 0;
        for (const auto& [first, count] : outline.appended) {
            QCOMPARE(first, next);
            next += count;
        }
        QCOMPARE(next, size_t(files + 1));
        QVERIFY(files < 2000 || outline.appended.size() > 1);
        QCOMPARE(outline.reorders.size(), 1);
        const std::vector<EntryId>& order = outline.reorders.front();
        QCOMPARE(order, ::largestFirst(index, tree.root()));
        for (size_t i = 1; i < order.size(); ++i) {
            const qint64 before = index.allocated(order[i - 1]), now = index.allocated(order[i]);
            QVERIFY(before > now || (before == now && order[i - 1] < order[i]));
        }
        QCOMPARE(index.name(order.front()), QByteArray("dir"));
    }

    // A path that is gone or a file lists nothing, and is measured as du measures it.
    void unlistableRoots_data() {
        QTest::addColumn<QByteArray>("suffix");
        QTest::newRow("no longer exists") << QByteArray("/gone");
        QTest::newRow("is a file") << QByteArray("/file");
    }
    void unlistableRoots() {
        QFETCH(QByteArray, suffix);
        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "file"), 5000);
        SizeTree tree;
        tree.open(folder + suffix);
        QVERIFY(settled(tree));
        QCOMPARE(tree.index()->childCount(tree.root()), size_t(0));
        QVERIFY(tree.index()->state(tree.root()) & Unreadable);
        QCOMPARE(tree.index()->allocated(tree.root()), qMax<qint64>(0, duBytes(folder + suffix)));
    }

    // Once walked, a folder below is shown from the index: no folder is read for it. A
    // folder whose own listing changed since is walked again, in place, and its
    // ancestors' totals move by the difference; so does a change an action reports.
    void foldersBelowComeFromTheIndex() {
        const QByteArray folder = nested();
        SizeTree tree;
        Recorder outline;
        tree.setDisplay(&outline);
        tree.open(folder);
        QVERIFY(settled(tree));
        const SizeIndex& index = *tree.index();
        const EntryId a = childNamed(index, tree.root(), "a");
        const EntryId deep = childNamed(index, a, "deep");
        const quint64 readsBefore = DirectoryReader::foldersRead();
        for (const EntryId shown : {a, deep}) {
            outline.withRows << shown;
            tree.rowsShown(shown, index.childCount(shown));
        }
        QTest::qWait(100);
        QCOMPARE(DirectoryReader::foldersRead(), readsBefore);
        QCOMPARE(index.allocated(deep), duBytes(join(folder, "a/deep")));

        // Changed behind the tree's back: seen when the folder is shown again.
        writeFile(join(folder, "a/deep/new"), 700000);
        tree.rowsShown(deep, index.childCount(deep));
        QTRY_VERIFY(DirectoryReader::foldersRead() > readsBefore);
        QVERIFY(settled(tree));
        QCOMPARE(DirectoryReader::foldersRead(), readsBefore + 2); // deep and deep/er
        for (const QByteArray& path : {join(folder, "a/deep"), join(folder, "a"), folder})
            QCOMPARE(index.allocated(path == folder        ? tree.root()
                                     : path.endsWith("/a") ? a
                                                           : deep),
                     duBytes(path));

        // An action in b: b alone is walked again.
        QVERIFY(unlink(join(folder, "b/h").constData()) == 0);
        const EntryId b = childNamed(index, tree.root(), "b");
        QSignalSpy changed(&tree, &IndexSource::subtreeChanged);
        tree.refreshParent(tree.itemAt(index.children(b).front()));
        QVERIFY(settled(tree));
        QCOMPARE(changed.count(), 1); // views below b, or above it, look again
        QCOMPARE(changed.front().front().value<EntryId>(), b);
        QCOMPARE(DirectoryReader::foldersRead(), readsBefore + 3);
        QCOMPARE(index.allocated(b), duBytes(join(folder, "b")));
        QCOMPARE(index.allocated(tree.root()), duBytes(folder));
        QCOMPARE(index.itemsBelow(tree.root()), quint32(7));
    }

    // A folder inside a fully walked index is opened from it; opening the same folder
    // again walks it again.
    void openingAFolderInsideKeepsTheIndex() {
        const QByteArray folder = nested();
        SizeTree tree;
        tree.open(folder);
        QVERIFY(settled(tree));
        const std::shared_ptr<SizeIndex> walked = tree.index();
        const quint64 readsBefore = DirectoryReader::foldersRead();
        tree.open(join(folder, "a/deep"));
        QCOMPARE(tree.index(), walked);
        QCOMPARE(tree.rootPath(), join(folder, "a/deep"));
        QCOMPARE(walked->allocated(tree.root()), duBytes(join(folder, "a/deep")));
        tree.open(folder);
        QCOMPARE(tree.index(), walked);
        QCOMPARE(tree.root(), walked->root());
        QCOMPARE(DirectoryReader::foldersRead(), readsBefore);
        tree.open(folder);
        QVERIFY(tree.index() != walked);
        QVERIFY(settled(tree));
    }

    // Stopped midway: what is not measured holds what was found so far and says so,
    // never more than du finds, and nothing changes afterwards.
    void stoppedMidway() {
        const QByteArray folder = tmp.freshFolder();
        for (int c = 0; c < 100; ++c) {
            const QByteArray child = join(folder, "c" + QByteArray::number(c));
            makeDir(child);
            for (int f = 0; f < 500; ++f)
                writeFile(join(child, "f" + QByteArray::number(f)), f % 100 ? 0 : 4096);
        }
        SizeTree tree;
        Recorder outline;
        outline.onFirstRows = [&tree] { tree.stop(); };
        tree.setDisplay(&outline);
        tree.open(folder);
        QTRY_VERIFY(tree.wasStopped());
        QVERIFY(!tree.isWalking());
        QVERIFY(tree.workers().waitForDone(10000));
        const SizeIndex& index = *tree.index();
        const quint16 state = index.state(tree.root());
        QVERIFY(state & Partial);
        const qint64 found = index.allocated(tree.root());
        QVERIFY(found <= duBytes(folder));
        QTest::qWait(100);
        QCOMPARE(index.allocated(tree.root()), found);
        QCOMPARE(index.state(tree.root()), state);
    }

    // Opening another folder drops what is still on its way for the old one: none of
    // it is applied, and the new folder does not wait behind it.
    void openingAnotherFolderDropsTheOldWork() {
        const QByteArray first = tmp.freshFolder();
        for (int i = 0; i < 300; ++i) {
            makeDir(join(first, "d" + QByteArray::number(i)));
            writeFile(join(first, "d" + QByteArray::number(i) + "/x"), 0);
        }
        const QByteArray second = nested();
        SizeTree tree;
        Recorder outline;
        tree.setDisplay(&outline);
        outline.onFirstRows = [&] { tree.open(second); };
        tree.open(first);
        QTRY_VERIFY(tree.rootPath() == second);
        QVERIFY(settled(tree));
        QCOMPARE(tree.index()->allocated(tree.root()), duBytes(second));
    }

    // Once the tree is gone no walk goes on, and nothing is applied.
    void noWalkOutlivesTheTree() {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 3000; ++i) {
            makeDir(join(folder, "d" + QByteArray::number(i)));
            writeFile(join(folder, "d" + QByteArray::number(i) + "/x"), 0);
        }
        std::shared_ptr<SizeIndex> index;
        {
            SizeTree tree;
            tree.open(folder);
            QTRY_VERIFY(tree.index()->childCount(tree.root()) > 0);
            index = tree.index();
        }
        const size_t entries = index->size();
        QTest::qWait(200);
        QCOMPARE(index->size(), entries);
        QCOMPARE(index.use_count(), 1L);
    }

    void largestFirst_data() {
        QTest::addColumn<QList<qint64>>("blocks");
        QTest::addColumn<QList<int>>("listedPlaces");
        QTest::newRow("descending") << QList<qint64>{1, 3, 2} << QList<int>{1, 2, 0};
        QTest::newRow("ties keep listed order")
            << QList<qint64>{5, 9, 5, 9, 5} << QList<int>{1, 3, 0, 2, 4};
        QTest::newRow("empty") << QList<qint64>{} << QList<int>{};
        // Long enough that an unstable sort would mix the ties.
        QList<qint64> manyTies;
        QList<int> byThirds[3];
        for (int place = 0; place < 300; ++place) {
            manyTies << place % 3;
            byThirds[2 - place % 3] << place;
        }
        QTest::newRow("many ties") << manyTies << byThirds[0] + byThirds[1] + byThirds[2];
    }
    void largestFirst() {
        QFETCH(QList<qint64>, blocks);
        QFETCH(QList<int>, listedPlaces);
        SizeIndex index("/f");
        std::vector<SizeIndex::NewEntry> batch;
        for (const qint64 size : blocks)
            batch.push_back(
                {"e" + QByteArray::number(qsizetype(batch.size())), ItemKind::File, 1, size});
        const EntryId first = batch.empty() ? 0 : index.append(index.root(), batch);
        const std::vector<EntryId> order = ::largestFirst(index, index.root());
        QCOMPARE(order.size(), size_t(blocks.size()));
        for (size_t place = 0; place < order.size(); ++place)
            QCOMPARE(order[place], first + EntryId(listedPlaces[qsizetype(place)]));
    }
};

QTEST_GUILESS_MAIN(TestSizeTree)
#include "tst_sizetree.moc"
