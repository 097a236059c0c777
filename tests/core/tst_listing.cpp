#include "RecordingDisplay.h"
#include "TempTree.h"
#include "app/AppController.h"

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

QList<QByteArray> sorted(QList<QByteArray> list) {
    std::sort(list.begin(), list.end());
    return list;
}

} // namespace

class TestListing : public QObject {
    Q_OBJECT
    temptree::Dir tmp;
    QByteArray base;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        base = tmp.bytes();
    }

    void entriesAsTheFileSystemHasThem() {
        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "plain"), 10);
        writeFile(join(folder, ".hidden"), 10);
        writeFile(join(folder, "._plain"), 10);
        makeDir(join(folder, "sub"));
        makeDir(join(folder, "._sub"));
        writeFile(join(folder, "caf\xe9"), 10);
        QVERIFY(symlink(join(folder, "sub").constData(), join(folder, "linkToSub").constData()) ==
                0);

        AppController controller;
        const NodePtr root = Node::make(folder, true);
        controller.rootNode = root;
        controller.ensureListed(root);
        QVERIFY(root->children);
        QCOMPARE(sorted(names(*root->children)),
                 sorted({"plain", ".hidden", "sub", "caf\xe9", "linkToSub"}));
        for (const NodePtr& child : *root->children) {
            QCOMPARE(child->parent.lock(), root);
            QCOMPARE(child->size, qint64(-1));
            QVERIFY(!child->children);
            // Only the real folder is a folder; the link to it is not.
            QCOMPARE(child->isDir, lastPathComponent(child->url) == "sub");
            if (child->url.endsWith("caf\xe9"))
                QCOMPARE(child->name, QString("caf\ufffd"));
        }
        QCOMPARE(root->pending, qint64(5));
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
        AppController controller;
        RecordingDisplay display;
        controller.display = &display;
        const NodePtr node = Node::make(folder + suffix, true);
        controller.ensureListed(node);
        QVERIFY(node->children.has_value());
        QVERIFY(node->children->empty());
        QCOMPARE(node->pending, qint64(0));
        QCoreApplication::processEvents();
        QVERIFY(display.childRedraws.isEmpty());
    }

    void listsOnlyOnce() {
        const QByteArray folder = tmp.freshFolder();
        AppController controller;
        const NodePtr node = Node::make(folder, true);
        controller.ensureListed(node);
        QVERIFY(node->children && node->children->empty());
        writeFile(join(folder, "late"), 1);
        controller.ensureListed(node);
        QVERIFY(node->children->empty());

        const NodePtr file = Node::make(join(folder, "late"), false);
        controller.ensureListed(file);
        QVERIFY(!file->children);
    }

    // Sizes arrive in any order; the level is sorted once, largest first, ties in
    // listing order, and only then redrawn with its children.
    void sortsOnceWhenAllSizesAreIn() {
        const QByteArray folder = tmp.freshFolder();
        writeFile(join(folder, "small"), 4096);
        writeFile(join(folder, "tieA"), 40000);
        writeFile(join(folder, "tieB"), 40000);
        writeFile(join(folder, "tieC"), 40000);
        writeFile(join(folder, "empty"), 0);
        writeFile(join(folder, "large"), 300000);
        makeDir(join(folder, "dir"));
        writeFile(join(join(folder, "dir"), "inner"), 200000);

        AppController controller;
        RecordingDisplay display;
        controller.display = &display;
        const NodePtr root = Node::make(folder, true);
        controller.rootNode = root;
        controller.ensureListed(root);
        const NodeList listingOrder = *root->children;
        for (const NodePtr& child : listingOrder)
            display.shown.insert(child.get());

        QTRY_COMPARE(root->pending, qint64(0));
        // Every shown child was redrawn once, and the folder once at the end.
        QCOMPARE(display.rowRedraws.size(), int(listingOrder.size()));
        QCOMPARE(display.childRedraws, QList<const Node*>{root.get()});

        for (const NodePtr& child : listingOrder) {
            const qint64 expected =
                child->isDir ? duBytes(child->url) : statBlocksBytes(child->url);
            QCOMPARE(child->size, expected);
        }
        NodeList expected = listingOrder;
        std::stable_sort(expected.begin(), expected.end(),
                         [](const NodePtr& a, const NodePtr& b) { return a->size > b->size; });
        QCOMPARE(names(*root->children), names(expected));
        QCOMPARE(lastPathComponent(root->children->back()->url), QByteArray("empty"));
        QCOMPARE(lastPathComponent(root->children->front()->url), QByteArray("large"));
        // The three equal files keep the order in which the listing gave them.
        QList<QByteArray> tiesListed, tiesSorted;
        for (const NodePtr& child : listingOrder)
            if (child->url.contains("/tie"))
                tiesListed << child->url;
        for (const NodePtr& child : *root->children)
            if (child->url.contains("/tie"))
                tiesSorted << child->url;
        QCOMPARE(tiesSorted, tiesListed);
    }

    void hiddenFolderIsNotRedrawn() {
        const QByteArray folder = tmp.freshFolder();
        makeDir(join(folder, "sub"));
        writeFile(join(join(folder, "sub"), "x"), 5000);
        AppController controller;
        RecordingDisplay display;
        controller.display = &display;
        const NodePtr root = Node::make(folder, true);
        controller.rootNode = root;
        controller.ensureListed(root);
        const NodePtr sub = root->children->front();
        controller.ensureListed(sub); // listed, then collapsed: not shown
        QTRY_COMPARE(sub->pending, qint64(0));
        QTRY_COMPARE(root->pending, qint64(0));
        QCOMPARE(sub->children->front()->size, statBlocksBytes(join(join(folder, "sub"), "x")));
        QVERIFY(!display.childRedraws.contains(sub.get()));
        QVERIFY(!display.rowRedraws.contains(sub->children->front().get()));
        QVERIFY(display.childRedraws.contains(root.get())); // the root always is
    }

    // A discarded listing's results still count down the new listing's pending.
    void resultsOfReplacedListing() {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 4; ++i)
            writeFile(join(folder, "f" + QByteArray::number(i)), 4096 * (i + 1));
        AppController controller;
        RecordingDisplay display;
        controller.display = &display;
        const NodePtr root = Node::make(folder, true);
        controller.rootNode = root;
        controller.ensureListed(root);
        const NodeList old = *root->children;
        root->children.reset();
        controller.ensureListed(root);
        QCOMPARE(root->pending, qint64(4));
        for (const NodePtr& node : old)
            QTRY_VERIFY(node->size >= 0);
        QTRY_COMPARE(root->pending, qint64(-4));
        // One sort and one redraw, when the count passed through zero.
        QCOMPARE(display.childRedraws.size(), 1);
        for (const NodePtr& node : old)
            QVERIFY(std::find(root->children->begin(), root->children->end(), node) ==
                    root->children->end());
    }

    void noResultsAfterControllerIsGone() {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 8; ++i) {
            const QByteArray sub = join(folder, "d" + QByteArray::number(i));
            makeDir(sub);
            writeFile(join(sub, "x"), 100000);
        }
        NodePtr root = Node::make(folder, true);
        auto controller = std::make_unique<AppController>();
        controller->ensureListed(root);
        const NodeList children = *root->children;
        controller.reset();
        // Queued work holds the folder; it lets go once every result has been handed back.
        QTRY_COMPARE(root.use_count(), 1L);
        for (const NodePtr& child : children)
            QCOMPARE(child->size, qint64(-1));
        QCOMPARE(root->pending, qint64(8));
    }

    void fiftyThousandEntries() {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < 50000; ++i) {
            const QByteArray path = join(folder, "n" + QByteArray::number(i));
            if (i % 5000 == 0)
                writeFile(path, 4096 * (1 + i / 5000));
            else {
                const int fd = open(path.constData(), O_WRONLY | O_CREAT, 0644);
                QVERIFY(fd >= 0);
                close(fd);
            }
        }
        AppController controller;
        RecordingDisplay display;
        controller.display = &display;
        const NodePtr root = Node::make(folder, true);
        controller.rootNode = root;
        controller.ensureListed(root);
        QCOMPARE(root->children->size(), size_t(50000));
        QTRY_COMPARE_WITH_TIMEOUT(root->pending, qint64(0), 60000);
        QCOMPARE(display.childRedraws.size(), 1);
        const NodeList& level = *root->children;
        QVERIFY(std::is_sorted(level.begin(), level.end(), [](const NodePtr& a, const NodePtr& b) {
            return a->size > b->size;
        }));
        QCOMPARE(lastPathComponent(level.front()->url), QByteArray("n45000"));
        QCOMPARE(level.front()->size, statBlocksBytes(join(folder, "n45000")));
    }
};

QTEST_GUILESS_MAIN(TestListing)
#include "tst_listing.moc"
