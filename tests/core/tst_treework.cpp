// Work queued for a tree counts only while it is wanted: a listing that was discarded,
// a tree that was replaced and a controller that is gone get no results and leave no
// measurement running.
#include "ChildProcesses.h"
#include "TempTree.h"
#include "app/AppController.h"
#include "core/TreeDisplay.h"

#include <QCoreApplication>
#include <QThread>
#include <algorithm>

using namespace temptree;

namespace {

// Records what the size tree asks of the outline.
struct Recorder : TreeDisplay {
    QList<const Node*> childRedraws;
    void showNewRoot(const NodePtr&) override {}
    bool isShown(const Node&) const override { return false; }
    void redrawRow(const NodePtr&) override {}
    void redrawRowAndChildren(const NodePtr& node) override { childRedraws << node.get(); }
};

bool sortedLargestFirst(const NodeList& nodes) {
    return std::is_sorted(nodes.begin(), nodes.end(),
                          [](const NodePtr& a, const NodePtr& b) { return a->size > b->size; });
}

// Waits until no worker of the queue is busy and what they handed back has arrived.
void drain(QThreadPool* queue) {
    QTRY_VERIFY(queue->activeThreadCount() == 0);
    QCoreApplication::processEvents();
}

} // namespace

class TestTreeWork : public QObject {
    Q_OBJECT
    Dir tmp;

    // Folders of one file each; the files are empty when their size does not matter,
    // which makes thousands quick to write.
    QByteArray foldersOfOneFile(int count, bool sized = true) {
        const QByteArray folder = tmp.freshFolder();
        for (int i = 0; i < count; ++i) {
            const QByteArray sub = join(folder, "d" + QByteArray::number(i));
            makeDir(sub);
            writeFile(join(sub, "x"), sized ? 4096 * (i % 7 + 1) : 0);
        }
        return folder;
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    // A change on disk refreshes a folder before its first results are in: those results
    // reach neither the new listing's count nor its order.
    void refreshBeforeFirstResults() {
        const QByteArray folder = foldersOfOneFile(5);
        writeFile(join(folder, "file"), 30000);
        AppController controller;
        Recorder outline;
        controller.display = &outline;
        controller.openPath(folder);
        const NodePtr root = controller.rootNode;
        const NodeList discarded = *root->children;
        controller.refreshParent(discarded.front());
        QVERIFY(!root->children);
        controller.ensureListed(root); // as the outline asks again
        QCOMPARE(root->pending, qint64(6));

        drain(controller.sizeQueue);
        QCOMPARE(root->pending, qint64(0));
        for (const NodePtr& node : discarded)
            QCOMPARE(node->size, qint64(-1));
        for (const NodePtr& child : *root->children)
            QCOMPARE(child->size, child->isDir ? duBytes(child->url) : statBlocksBytes(child->url));
        QVERIFY(sortedLargestFirst(*root->children));
        QVERIFY(outline.childRedraws.contains(root.get()));
    }

    // Opening another folder drops what is still queued for the old tree: none of its
    // measurements is applied, and the new folder does not wait behind them.
    void openingAnotherFolderDropsTheOldWork() {
        const QByteArray first = foldersOfOneFile(60);
        const QByteArray second = foldersOfOneFile(2);
        AppController controller;
        controller.openPath(first);
        const NodePtr oldRoot = controller.rootNode;
        const NodeList oldChildren = *oldRoot->children;
        controller.openPath(second);
        const NodePtr newRoot = controller.rootNode;
        QTRY_VERIFY(newRoot->pending == 0 && newRoot->size >= 0);
        QCOMPARE(newRoot->size, duBytes(second));

        drain(controller.sizeQueue);
        QCOMPARE(oldRoot->size, qint64(-1));
        QVERIFY(std::ranges::all_of(oldChildren, [](const NodePtr& n) { return n->size < 0; }));
        QCOMPARE(oldRoot->pending, qint64(60));
        QCOMPARE(childprocesses::count("du"), 0);
    }

    // Once the controller is gone no measurement starts, not even those that a worker
    // is still putting on the queue for a large folder, and no du is left running.
    void noMeasurementOutlivesTheController() {
        const QByteArray folder = foldersOfOneFile(3000, false);
        NodePtr root = Node::make(folder, true);
        NodeList children;
        {
            AppController controller;
            controller.ensureListed(root);
            children = *root->children;
            // Gone while measurements run.
            QTRY_VERIFY(controller.sizeQueue->activeThreadCount() > 1);
        }
        const auto measured = [&] {
            return std::ranges::count_if(children, [](const NodePtr& n) { return n->size >= 0; });
        };
        const auto measuredWhileThere = measured();
        // Observed for a while: a du started late would show up here.
        for (int look = 0; look < 50; ++look) {
            QCOMPARE(childprocesses::count("du"), 0);
            QThread::msleep(10);
        }
        // Queued work let go of the folder and applied nothing more.
        QTRY_COMPARE(root.use_count(), 1L);
        QCOMPARE(measured(), measuredWhileThere);
        QVERIFY(measuredWhileThere < qsizetype(children.size()));
    }

    // A root reached through a symbolic link is the folder the link leads to, totals
    // included; links below the root stay links.
    void rootThroughALink() {
        const QByteArray folder = foldersOfOneFile(3);
        const QByteArray link = join(tmp.bytes(), "link-" + lastPathComponent(folder));
        QVERIFY(symlink(folder.constData(), link.constData()) == 0);
        QVERIFY(symlink(join(folder, "d0").constData(), join(folder, "inner").constData()) == 0);

        AppController controller;
        controller.openPath(link);
        const NodePtr root = controller.rootNode;
        QTRY_VERIFY(root->size >= 0 && root->pending == 0);
        const auto out = runForOutput("/usr/bin/du", {"-skL", "--", link});
        QVERIFY(out);
        QCOMPARE(root->size, out->left(out->indexOf('\t')).toLongLong() * 1024);
        QCOMPARE(root->size, duBytes(folder));
        const auto inner = std::ranges::find(
            *root->children, "inner", [](const NodePtr& n) { return lastPathComponent(n->url); });
        QVERIFY(inner != root->children->end() && !(*inner)->isDir);
        QCOMPARE((*inner)->size, statBlocksBytes(join(folder, "inner")));
    }
};

QTEST_GUILESS_MAIN(TestTreeWork)
#include "tst_treework.moc"
