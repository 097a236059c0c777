// Share: a picker of the services this machine has for sending the item.
#include "actions/SharePicker.h"
#include "app/AppController.h"
#include "platform/ShareServices.h"
#include "ui/TreeModel.h"
#include "ui/TreeOutlineView.h"

#include <QMenu>

void AppController::ctxShare() {
    if (!menuNode)
        return;
    const NodePtr node = menuNode;
    probeShareFacts(node->isDir, this, [this, node](const ShareFacts& facts) {
        showSharePicker(node, shareServicesFor(facts));
    });
}

void AppController::showSharePicker(const NodePtr& node, const QList<ShareService>& services) {
    if (!outline)
        return;
    QMenu* picker = makeSharePicker(services, node->url, this, outline);
    // The row's rectangle; when the node no longer has a row (its folder was listed
    // again meanwhile), the 1 x 1 rectangle at the outline's top-left corner.
    QRect anchor = outline->rowRect(model ? model->indexOf(*node) : QModelIndex());
    if (anchor.isEmpty())
        anchor = QRect(0, 0, 1, 1);
    // Out of the anchor's top edge: the picker sits just above it.
    const QPoint corner = outline->viewport()->mapToGlobal(anchor.topLeft());
    picker->popup(corner - QPoint(0, picker->sizeHint().height()));
}
