// The size tree's part of the controller: listing folders and applying measurements.
#include "app/AppController.h"
#include "core/FolderListing.h"
#include "core/SizeMeasure.h"
#include "core/TreeDisplay.h"

#include <QCoreApplication>
#include <algorithm>

void AppController::measureAndHandBack(QPointer<AppController> self, const NodePtr& node,
                                       const StopFlagPtr& wanted, const SizeHandler& apply) {
    if (wanted->isStopped())
        return;
    const qint64 size = computeSize(*node, wanted.get());
    QCoreApplication* app = QCoreApplication::instance();
    if (!app || wanted->isStopped())
        return;
    // Checked again on arrival: the work may be dropped while the result is on its way.
    QMetaObject::invokeMethod(
        app,
        [self, wanted, apply, size] {
            if (!wanted->isStopped())
                apply(self, size);
        },
        Qt::QueuedConnection);
}

void AppController::measureInBackground(const NodePtr& node, const StopFlagPtr& wanted,
                                        SizeHandler apply) {
    sizeQueue->start([self = QPointer<AppController>(this), node, wanted,
                      apply = std::move(apply)] { measureAndHandBack(self, node, wanted, apply); });
}

bool AppController::isShown(const Node& node) const {
    return display && display->isShown(node);
}

void AppController::ensureListed(const NodePtr& node) {
    if (!node || !node->isDir || node->children)
        return;
    // A listing made before this one, and discarded, counts no more.
    dropListingWork(*node);
    NodeList children;
    for (ListedEntry& entry : listFolder(node->url))
        children.push_back(Node::make(std::move(entry.path), entry.isDir, node, entry.type));
    node->children = std::move(children);
    node->pending = qint64(node->children->size());
    if (node->children->empty())
        return;
    // Its results count for this listing only: once the listing is discarded (or one
    // above it, or the tree is replaced), what is still queued is dropped and what is
    // on its way ignored.
    const NodePtr folderAbove = node->parent.lock();
    const StopFlagPtr wanted = StopFlag::make(listingFlags.value(folderAbove.get(), treeFlag));
    listingFlags.insert(node.get(), wanted);
    // One measurement per child. A large folder has tens of thousands: they are put on
    // the queue from a worker, so the interface does not wait for the queueing itself.
    QPointer<AppController> self(this);
    sizeQueue->start([self, wanted, pool = sizeQueue, folder = node, children = *node->children] {
        for (const NodePtr& child : children) {
            if (wanted->isStopped())
                return;
            pool->start([self, wanted, child, folder] {
                measureAndHandBack(self, child, wanted,
                                   [child, folder](QPointer<AppController> self, qint64 size) {
                                       if (self)
                                           self->applyChildSize(child, folder, size);
                                   });
            });
        }
    });
}

void AppController::dropListingWork(const Node& folder) {
    if (const StopFlagPtr wanted = listingFlags.take(&folder))
        wanted->stop();
}

void AppController::applyChildSize(const NodePtr& child, const NodePtr& folder, qint64 size) {
    child->size = size;
    if (isShown(*child))
        display->redrawRow(child);
    folder->pending -= 1;
    if (folder->pending != 0)
        return;
    if (folder->children)
        std::stable_sort(folder->children->begin(), folder->children->end(),
                         [](const NodePtr& a, const NodePtr& b) { return a->size > b->size; });
    if (display && (isShown(*folder) || folder == rootNode))
        display->redrawRowAndChildren(folder);
}
