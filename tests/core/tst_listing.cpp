#include "TempTree.h"
#include "app/AppController.h"
#include "core/TreeDisplay.h"

#include <QCoreApplication>
#include <algorithm>

using namespace temptree;

namespace {

QList<QByteArray> names(const NodeList& nodes) {
    QList<QByteArray> list;
    for (const NodePtr& node : nodes)
        list << lastPathComponent(node->url);
    return list;
}

// A folder listed as the root of a controller, with a stand-in for the outline that
// says which nodes are shown and records every redraw.
struct Listing : TreeDisplay {
    AppController controller;
    NodePtr root;
    QSet<const Node*> shown;
    QList<const Node*> rowRedraws, childRedraws;

    explicit Listing(const QByteArray& folder) : root(Node::make(folder, true)) {
        controller.display = this;
        controller.rootNode = root;
        controller.ensureListed(root);
    }
    void showNewRoot(const NodePtr&) override {}
    bool isShown(const Node& node) const override { return shown.contains(&node); }
    void redrawRow(const NodePtr& node) override { rowRedraws << node.get(); }
    void redrawRowAndChildren(const NodePtr& node) override { childRedraws << node.get(); }
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
                QCOMPARE(child->name, QString("caf\ufffd"));
        }
        QCOMPARE(root->pending, qint64(8));
        QTRY_COMPARE(root->pending, qint64(0));
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
        QCOMPARE(listing.root->pending, qint64(0));
        QCoreApplication::processEvents();
        QVERIFY(listing.childRedraws.isEmpty());
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

        Listing listing(folder);
        const NodeList listingOrder = *listing.root->children;
        for (const NodePtr& child : listingOrder)
            listing.shown.insert(child.get());
        QTRY_COMPARE(listing.root->pending, qint64(0));
        // Every shown child was redrawn once, and the folder once at the end.
        QCOMPARE(listing.rowRedraws.size(), qsizetype(listingOrder.size()));
        QCOMPARE(listing.childRedraws, QList<const Node*>{listing.root.get()});
        for (const NodePtr& child : listingOrder)
            QCOMPARE(child->size, child->isDir ? duBytes(child->url) : statBlocksBytes(child->url));
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
        const NodePtr sub = listing.root->children->front();
        listing.controller.ensureListed(sub); // listed, then collapsed: not shown
        QTRY_COMPARE(sub->pending, qint64(0));
        QTRY_COMPARE(listing.root->pending, qint64(0));
        QCOMPARE(sub->children->front()->size, statBlocksBytes(join(folder, "sub/x")));
        QCOMPARE(listing.childRedraws, QList<const Node*>{listing.root.get()}); // root always
        QVERIFY(listing.rowRedraws.isEmpty());
    }

    void fiftyThousandEntries() {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 50000; ++i)
            writeFile(join(folder, "n" + QByteArray::number(i)),
                      i % 5000 ? 0 : 4096 * (1 + i / 5000));
        Listing listing(folder);
        const NodeList& level = *listing.root->children;
        QCOMPARE(level.size(), size_t(50000));
        QTRY_COMPARE_WITH_TIMEOUT(listing.root->pending, qint64(0), 60000);
        QCOMPARE(listing.childRedraws.size(), 1);
        QVERIFY(std::is_sorted(level.begin(), level.end(), [](const NodePtr& a, const NodePtr& b) {
            return a->size > b->size;
        }));
        QCOMPARE(lastPathComponent(level.front()->url), QByteArray("n45000"));
        QCOMPARE(level.front()->size, statBlocksBytes(join(folder, "n45000")));
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
        QCOMPARE(Node(url, true).name, name);
        QCOMPARE(deletingLastPathComponent(url), parentPath);
    }
};

QTEST_GUILESS_MAIN(TestListing)
#include "tst_listing.moc"
