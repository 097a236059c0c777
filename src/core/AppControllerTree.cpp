// The size tree's part of the controller: listing folders and applying measurements.
#include "app/AppController.h"
#include "core/FolderListing.h"
#include "core/SizeMeasure.h"
#include "core/TreeDisplay.h"

#include <QCoreApplication>
#include <algorithm>

void AppController::measureAndHandBack(QPointer<AppController> self, const NodePtr& node,
                                       const SizeHandler& apply) {
    const qint64 size = computeSize(*node);
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    QMetaObject::invokeMethod(
        app, [self, apply, size] { apply(self, size); }, Qt::QueuedConnection);
}

void AppController::measureInBackground(const NodePtr& node, SizeHandler apply) {
    sizeQueue->start([self = QPointer<AppController>(this), node, apply = std::move(apply)] {
        measureAndHandBack(self, node, apply);
    });
}

bool AppController::isShown(const Node& node) const {
    return display && display->isShown(node);
}

void AppController::ensureListed(const NodePtr& node) {
    if (!node || !node->isDir || node->children)
        return;
    NodeList children;
    for (ListedEntry& entry : listFolder(node->url))
        children.push_back(Node::make(std::move(entry.path), entry.isDir, node));
    node->children = std::move(children);
    node->pending = qint64(node->children->size());
    if (node->children->empty())
        return;
    // One measurement per child. A large folder has tens of thousands: they are put on
    // the queue from a worker, so the interface does not wait for the queueing itself.
    QPointer<AppController> self(this);
    sizeQueue->start([self, pool = sizeQueue, folder = node, children = *node->children] {
        for (const NodePtr& child : children)
            pool->start([self, child, folder] {
                measureAndHandBack(self, child,
                                   [child, folder](QPointer<AppController> self, qint64 size) {
                                       if (self)
                                           self->applyChildSize(child, folder, size);
                                   });
            });
    });
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
