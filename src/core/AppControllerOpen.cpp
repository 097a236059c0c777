// Opening a folder as the root, and measuring again after changes on disk.
#include "app/AppController.h"
#include "core/TreeDisplay.h"
#include "text/StatusLine.h"

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
    treeFlag->stop();
    treeFlag = StopFlag::make(lifeFlag);
    listingFlags.clear();
    if (display)
        display->showNewRoot(root);
    // The open root row shows its children as they are listed.
    ensureListed(root);
    if (status)
        status->setText(statusLineForRoot(*root));

    measureInBackground(root, treeFlag, [root](QPointer<AppController> self, qint64 size) {
        root->size = size;
        if (self && self->rootNode == root)
            self->applyRootTotal(root);
    });
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
    measureInBackground(node, treeFlag, [node](QPointer<AppController> self, qint64 size) {
        node->size = size;
        if (!self)
            return;
        if (self->display && (self->isShown(*node) || node == self->rootNode))
            self->display->redrawRow(node);
        // Ancestors one after another, each once the level below it is measured.
        if (const NodePtr parent = node->parent.lock())
            self->recompute(parent);
    });
}

void AppController::refreshParent(const NodePtr& node) {
    if (const NodePtr folder = node->parent.lock()) {
        dropListingWork(*folder);
        folder->children.reset();
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
