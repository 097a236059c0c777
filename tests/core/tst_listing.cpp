// SPDX-License-Identifier: GPL-2.0-or-later
#include "TempTree.h"
#include "core/SizeTree.h"
#include "core/TreeDisplay.h"

#include <QCoreApplication>
#include <QTest>
#include <algorithm>

using namespace temptree;

namespace {

QList<QByteArray> names(const NodeList& nodes) {
    QList<QByteArray> list;
    for (const NodePtr& node : nodes)
        list << lastPathComponent(node->url);
    return list;
}

// A folder listed as the root of a size tree, with a stand-in for the outline that
// says which nodes are shown and records every redraw and every run of rows added.
struct Listing : TreeDisplay {
    SizeTree controller;
    NodePtr root;
    QSet<const Node*> shown;
    bool allShown = false;
    QList<const Node*> rowRedraws, childRedraws;
    QList<std::pair<size_t, size_t>> appended; // (first, count) of the root's runs
    NodeList listedOrder;                      // the root's children as they came

    explicit Listing(const QByteArray& folder, bool allShown = false) : allShown(allShown) {
        controller.setDisplay(this);
        controller.open(folder);
        root = controller.root();
    }
    // Every entry listed and every size in, the root's own total too.
    bool finished() const {
        return QTest::qWaitFor([this] { return root->pending == 0 && root->size() >= 0; }, 60000);
    }
    void showNewRoot(const NodePtr&) override {}
    bool isShown(const Node& node) const override { return allShown || shown.contains(&node); }
    void rowsAppended(const NodePtr& folder, size_t first, size_t count) override {
        if (folder != root)
            return;
        appended.append({first, count});
        listedOrder.insert(listedOrder.end(), folder->children->begin() + qsizetype(first),
                           folder->children->begin() + qsizetype(first + count));
    }
    void redrawRow(const NodePtr& node) override { rowRedraws << node.get(); }
    void redrawRowAndChildren(const NodePtr& node) override { childRedraws << node.get(); }
    void reorderChildren(const NodePtr&, const std::function<void()>& reorder) override {
        reorder();
    }
    void dropChildren(const NodePtr&) override {}
};

} // namespace

class TestListing : public QObject {
    Q_OBJECT
    Dir tmp;

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void entriesAsTheFileSystemHasThem() {
        const QByteArray folder = tmp.freshFolder();
        // "._" names are ordinary files here, taking space like any other.
        for (const char* file : {"plain", ".hidden", "._plain", "caf\xe9"})
            writeFile(join(folder, file), 10);
        makeDir(join(folder, "sub"));
        makeDir(join(folder, "._sub"));
        QVERIFY(symlink(join(folder, "sub").constData(), join(folder, "linkToSub").constData()) ==
                0);
        QVERIFY(mkfifo(join(folder, "pipe").constData(), 0600) == 0);

        Listing listing(folder);
        const NodePtr& root = listing.root;
        QVERIFY(listing.finished());
        QList<QByteArray> listed = names(*root->children);
        std::sort(listed.begin(), listed.end());
        QCOMPARE(listed, (QList<QByteArray>{"._plain", "._sub", ".hidden", "caf\xe9", "linkToSub",
                                            "pipe", "plain", "sub"}));
        const QHash<QByteArray, ItemKind> kinds{{"sub", ItemKind::Folder},
                                                {"._sub", ItemKind::Folder},
                                                {"linkToSub", ItemKind::Link},
                                                {"pipe", ItemKind::Other}};
        for (const NodePtr& child : *root->children) {
            // Only the real folders are folders; the link to one is not.
            const ItemKind kind = kinds.value(lastPathComponent(child->url), ItemKind::File);
            QCOMPARE(child->kind, kind);
            QCOMPARE(child->isDir, kind == ItemKind::Folder);
            if (child->url.endsWith("caf\xe9"))
                QCOMPARE(child->name(), QString("caf\ufffd"));
            QCOMPARE(child->size(),
                     child->isDir ? duBytes(child->url) : statBlocksBytes(child->url));
        }
    }

    void unlistableFoldersAreEmpty_data() {
        QTest::addColumn<QByteArray>("suffix");
        QTest::newRow("no longer exists") << QByteArray("/gone");
        QTest::newRow("is a file") << QByteArray("/file");
    }
    void unlistableFoldersAreEmpty() {
        QFETCH(QByteArray, suffix);
        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "file"), 1);
        Listing listing(folder + suffix);
        QVERIFY(listing.root->children && listing.root->children->empty());
        QVERIFY(listing.finished());
        QVERIFY(listing.root->children->empty());
        QVERIFY(listing.appended.isEmpty());
        // Listed once: what arrives later is not seen until the folder is listed afresh.
        writeFile(join(folder, "late"), 1);
        listing.controller.ensureListed(listing.root);
        QVERIFY(listing.root->children->empty());
    }

    // Sizes arrive in any order; the level is sorted once, largest first, ties in
    // listing order, and only then redrawn with its children.
    void sortsOnceWhenAllSizesAreIn() {
        const QByteArray folder = tmp.freshFolder();
        for (const char* tie : {"tieA", "tieB", "tieC"})
            writeFile(join(folder, tie), 40000);
        writeFile(join(folder, "small"), 4096);
        writeFile(join(folder, "empty"), 0);
        writeFile(join(folder, "large"), 300000);
        makeDir(join(folder, "dir"));
        writeFile(join(folder, "dir/inner"), 200000);

        Listing listing(folder, true);
        QVERIFY(listing.finished());
        const NodeList& listingOrder = listing.listedOrder;
        QCOMPARE(listingOrder.size(), size_t(7));
        // Files come with their sizes; the one folder is redrawn once measured, and the
        // level once sorted and once more with the shares of the root's total.
        const NodePtr dir =
            *std::ranges::find_if(listingOrder, [](const NodePtr& n) { return n->isDir; });
        QCOMPARE(listing.rowRedraws, (QList<const Node*>{dir.get(), listing.root.get()}));
        QCOMPARE(listing.childRedraws,
                 (QList<const Node*>{listing.root.get(), listing.root.get()}));
        for (const NodePtr& child : listingOrder)
            QCOMPARE(child->size(),
                     child->isDir ? duBytes(child->url) : statBlocksBytes(child->url));
        // The three equal files keep the order in which the listing gave them.
        QList<QByteArray> expected = names(listingOrder);
        for (const char* name : {"large", "dir", "small", "empty"})
            expected.removeOne(name);
        expected =
            QList<QByteArray>{"large", "dir"} + expected + QList<QByteArray>{"small", "empty"};
        QCOMPARE(names(*listing.root->children), expected);
    }

    void hiddenFolderIsNotRedrawn() {
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "sub"));
        writeFile(join(folder, "sub/x"), 5000);
        Listing listing(folder);
        QVERIFY(listing.finished());
        listing.childRedraws.clear();
        listing.rowRedraws.clear();
        const NodePtr sub = listing.root->children->front();
        listing.controller.ensureListed(sub); // listed, then collapsed: not shown
        QTRY_COMPARE(sub->pending, 0);
        QCOMPARE(sub->children->front()->size(), statBlocksBytes(join(folder, "sub/x")));
        QVERIFY(listing.childRedraws.isEmpty());
        QVERIFY(listing.rowRedraws.isEmpty());
    }

    void fiftyThousandEntries() {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 50000; ++i)
            writeFile(join(folder, "n" + QByteArray::number(i)),
                      i % 5000 ? 0 : 4096 * (1 + i / 5000));
        Listing listing(folder);
        QVERIFY(listing.finished());
        const NodeList& level = *listing.root->children;
        QCOMPARE(level.size(), size_t(50000));
        QCOMPARE(listing.childRedraws.size(), 2); // sorted, then the shares of the total
        // The rows came in runs, one after another, none of them the whole folder.
        QVERIFY(listing.appended.size() > 1);
        size_t next = 0;
        for (const auto& [first, count] : listing.appended) {
            QCOMPARE(first, next);
            QVERIFY(count < 50000);
            next += count;
        }
        QCOMPARE(next, size_t(50000));
        QVERIFY(std::is_sorted(level.begin(), level.end(), [](const NodePtr& a, const NodePtr& b) {
            return a->size() > b->size();
        }));
        QCOMPARE(lastPathComponent(level.front()->url), QByteArray("n45000"));
        QCOMPARE(level.front()->size(), statBlocksBytes(join(folder, "n45000")));
    }

    void nodeNames_data() {
        QTest::addColumn<QByteArray>("url");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("parentPath");
        QTest::newRow("file-system root") << QByteArray("/") << "/" << QByteArray("/");
        QTest::newRow("top folder") << QByteArray("/home") << "home" << QByteArray("/");
        QTest::newRow("trailing slash") << QByteArray("/home/u/") << "u" << QByteArray("/home");
    }
    void nodeNames() {
        QFETCH(QByteArray, url);
        QFETCH(QString, name);
        QFETCH(QByteArray, parentPath);
        QCOMPARE(Node(url, true).name(), name);
        QCOMPARE(deletingLastPathComponent(url), parentPath);
    }

    void largestFirst_data() {
        QTest::addColumn<QList<qint64>>("sizes");
        QTest::addColumn<QList<int>>("listedPlaces");
        QTest::newRow("descending") << QList<qint64>{1, 3, 2} << QList<int>{1, 2, 0};
        QTest::newRow("ties keep listed order")
            << QList<qint64>{5, 9, 5, 9, 5} << QList<int>{1, 3, 0, 2, 4};
        QTest::newRow("unmeasured last") << QList<qint64>{-1, 0, 4096} << QList<int>{2, 1, 0};
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
        QFETCH(QList<qint64>, sizes);
        QFETCH(QList<int>, listedPlaces);
        const NodePtr folder = Node::make("/f", true);
        NodeList level;
        for (qint64 size : sizes) {
            level.push_back(Node::make("/f/" + QByteArray::number(level.size()), false, folder));
            level.back()->setSize(size);
        }
        const NodeList listed = level;
        sortLargestFirst(level);
        QCOMPARE(level.size(), listed.size());
        for (size_t place = 0; place < level.size(); ++place) {
            QCOMPARE(level[place], listed[size_t(listedPlaces[qsizetype(place)])]);
            QCOMPARE(level[place]->indexInParent, int(place));
        }
    }
};

QTEST_GUILESS_MAIN(TestListing)
#include "tst_listing.moc"
