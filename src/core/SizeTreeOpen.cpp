// SPDX-License-Identifier: GPL-2.0-or-later
// Opening a folder as the root, and measuring again after changes on disk.
#include "core/SizeTree.h"
#include "core/TreeDisplay.h"

#include <QPointer>
#include <QThreadPool>

SizeTree::SizeTree(QObject* parent)
    : QObject(parent), sizeQueue(new QThreadPool), lifeFlag(StopFlag::make()),
      treeFlag(StopFlag::make(lifeFlag)), inbox(MainThreadInbox::make()) {
    sizeQueue->setMaxThreadCount(6);
    engine = makeMeasureEngine(sizeQueue);
    inbox->displayWorkDue = [this] { return rowsDueForAnnouncement(); };
    inbox->displayWork = [this] { showDueRows(); };
}

SizeTree::~SizeTree() {
    // Nothing queued starts now, and the du children that are running end, so the
    // workers come back at once.
    lifeFlag->stop();
    const QDeadlineTimer quitBy = quitDeadline.value_or(QDeadlineTimer(2000));
    engine->setQuitDeadline(quitBy);
    inbox->displayWorkDue = nullptr;
    inbox->displayWork = nullptr;
    dropTreeWork();
    engine.reset();
    sizeQueue->clear();
    // Should a worker still be caught in the file system (a mount that does not
    // answer), the queue is left to finish on its own rather than hang the quit.
    if (sizeQueue->waitForDone(int(quitBy.remainingTime())))
        delete sizeQueue;
}

void SizeTree::setQuitDeadline(QDeadlineTimer deadline) {
    quitDeadline = deadline;
}

void SizeTree::setDisplay(TreeDisplay* shower) {
    display = shower;
}

void SizeTree::open(const QByteArray& path) {
    const NodePtr root = Node::make(path, true);
    rootNode = root;
    // Whatever is still queued or running for the old tree is no longer wanted.
    dropTreeWork();
    treeFlag = StopFlag::make(lifeFlag);
    if (display)
        display->showNewRoot(root);
    Q_EMIT rootOpened(root);
    // The open root row shows its children as they are listed; the same walk gives
    // the root's total.
    ensureListed(root);
}

void SizeTree::applyRootTotal(const NodePtr& root) {
    if (display)
        display->redrawRow(root);
    if (!root->children)
        return;
    // Every child's share depends on the root's total.
    if (display)
        display->redrawRowAndChildren(root);
    Q_EMIT rootMeasured(root);
}

void SizeTree::recompute(const NodePtr& node) {
    // A measurement of the node still under way is overtaken by this one.
    if (const Listing older = remeasures.take(node.get()); older.walk) {
        older.wanted->stop();
        older.walk->cancel();
    }
    const StopFlagPtr wanted = StopFlag::make(treeFlag);
    const auto apply = [self = QPointer<SizeTree>(this), node, wanted](qint64 size) {
        if (!self || wanted->isStopped())
            return;
        self->remeasures.remove(node.get());
        if (node == self->rootNode) {
            self->applyFolderTotal(node, size);
            return;
        }
        node->setSize(size);
        if (self->display && self->isShown(*node))
            self->display->redrawRow(node);
        // Ancestors one after another, each once the level below it is measured.
        if (const NodePtr parent = node->parent.lock())
            self->recompute(parent);
    };
    const auto handOver = [inbox = inbox, apply](qint64 size) {
        inbox->post([apply, size] { apply(size); });
    };
    remeasures.insert(node.get(), {wanted, engine->measureItem(node->url, node->isDir, handOver)});
}

void SizeTree::refreshParent(const NodePtr& node) {
    // The folder's listing goes, and with it every walk below it.
    if (const NodePtr folder = node->parent.lock()) {
        dropListingWork(*folder);
        if (display)
            display->dropChildren(folder);
        folder->dropChildren();
        if (display && (isShown(*folder) || folder == rootNode))
            display->redrawRowAndChildren(folder);
        recompute(folder);
        return;
    }
    if (rootNode) {
        const QByteArray url = rootNode->url; // open replaces the node holding it
        open(url);
    }
}
