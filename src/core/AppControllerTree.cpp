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
    for (const NodePtr& child : *node->children) {
        measureInBackground(child,
                            [child, folder = node](QPointer<AppController> self, qint64 size) {
                                if (self)
                                    self->applyChildSize(child, folder, size);
                            });
    }
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
