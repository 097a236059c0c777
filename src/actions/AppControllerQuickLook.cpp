// Quick Look: the desktop's previewer when there is one, else Sizeloom's own window.
#include "actions/PreviewWindow.h"
#include "app/AppController.h"
#include "app/AuxWindow.h"
#include "platform/Previewer.h"
#include "ui/TreeModel.h"
#include "ui/TreeOutlineView.h"

#include <QMainWindow>

void AppController::ctxQuickLook() {
    if (menuNode)
        quickLook(menuNode, false);
}

void AppController::previewKeyPressed() {
    if (previewWindow && previewWindow->isVisible()) {
        previewWindow->close();
        return;
    }
    if (!outline || !model)
        return;
    const QModelIndexList selected = outline->selectionModel()->selectedRows();
    if (const NodePtr node = selected.isEmpty() ? NodePtr() : model->nodeAt(selected.first()))
        quickLook(node, true);
}

void AppController::quickLook(const NodePtr& node, bool toggle) {
    Previewer::showFile(node->url, toggle, this, [this, node] { showOwnPreview(node); });
}

void AppController::showOwnPreview(const NodePtr& node) {
    if (previewWindow)
        previewWindow->close();
    previewWindow = new PreviewWindow(node, this);
    presentCentered(previewWindow, window ? window->screen() : nullptr);
}
