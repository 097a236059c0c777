// Opening a folder as the root, and measuring again after changes on disk.
#include "app/AppController.h"
#include "core/TreeDisplay.h"
#include "window/StatusLine.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

void AppController::openPath(const QByteArray& path) {
    if (pathField)
        pathField->setText(displayPath(path));
    setEmpty(false);
    refreshVolumes();
    if (upButton)
        upButton->setEnabled(deletingLastPathComponent(path) != path);

    const NodePtr root = Node::make(path, true);
    rootNode = root;
    // Whatever is still queued or running for the old tree is no longer wanted.
    dropTreeWork();
    treeFlag = StopFlag::make(lifeFlag);
    if (display)
        display->showNewRoot(root);
    // The open root row shows its children as they are listed; the same walk gives
    // the root's total.
    ensureListed(root);
    if (status)
        status->setText(statusLineForRoot(*root));
}

void AppController::applyRootTotal(const NodePtr& root) {
    if (display)
        display->redrawRow(root);
    if (!root->children)
        return;
    // Every child's share depends on the root's total.
    if (display)
        display->redrawRowAndChildren(root);
    if (status)
        status->setText(statusLineForRoot(*root));
}

void AppController::recompute(const NodePtr& node) {
    // A measurement of the node still under way is overtaken by this one.
    if (const Listing older = remeasures.take(node.get()); older.walk) {
        older.wanted->stop();
        older.walk->cancel();
    }
    const StopFlagPtr wanted = StopFlag::make(treeFlag);
    const auto apply = [self = QPointer<AppController>(this), node, wanted](qint64 size) {
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

void AppController::refreshParent(const NodePtr& node) {
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
        const QByteArray url = rootNode->url; // openPath replaces the node holding it
        openPath(url);
    }
}
