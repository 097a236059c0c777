// Move to Trash: on a worker, then the folder is listed afresh; failures stay silent
// and the row simply stays.
#include "app/AppController.h"
#include "platform/Trash.h"

#include <QCoreApplication>

void AppController::ctxTrash() {
    const NodePtr node = menuNode;
    if (!node)
        return;
    QPointer<AppController> self(this);
    // Ahead of queued measurements: the person is waiting for the row to go.
    sizeQueue->start(
        [self, node] {
            moveToTrash(node->url);
            if (QCoreApplication* app = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    app,
                    [self, node] {
                        if (self)
                            self->refreshParent(node);
                    },
                    Qt::QueuedConnection);
        },
        1);
}
