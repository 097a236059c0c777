// The size tree's part of the controller: listing folders and applying measurements.
#include "app/AppController.h"
#include "core/FolderListing.h"
#include "core/SizeMeasure.h"
#include "core/TreeDisplay.h"

#include <QCoreApplication>
#include <algorithm>

void AppController::measureInBackground(
    const NodePtr& node, std::function<void(QPointer<AppController>, qint64)> apply) {
    QPointer<AppController> self(this);
    sizeQueue->start([node, self, apply = std::move(apply)] {
        const qint64 size = computeSize(*node);
        QCoreApplication* app = QCoreApplication::instance();
        if (!app)
            return;
        QMetaObject::invokeMethod(
            app, [self, apply, size] { apply(self, size); }, Qt::QueuedConnection);
    });
}

void AppController::reportSize(QPointer<AppController> self, const NodePtr& child,
                               const NodePtr& folder) {
    const qint64 size = computeSize(*child);
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    QMetaObject::invokeMethod(
        app,
        [self, child, folder, size] {
            if (self)
                self->applyChildSize(child, folder, size);
        },
        Qt::QueuedConnection);
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
            pool->start([self, child, folder] { reportSize(self, child, folder); });
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
