// Reveal: the item selected in a window of the desktop's file manager.
#include "app/AppController.h"
#include "platform/FileManager.h"
#include "platform/FolderHandler.h"
#include "ui/TreeModel.h"

void AppController::revealItem(const QByteArray& path) {
    // Without a file manager on the bus, the folder holding the item is opened with
    // whatever the desktop opens folders with.
    FileManager::showItem(
        path, this, [path] { openWithDefaultFolderHandler(deletingLastPathComponent(path)); });
}

void AppController::revealDoubleClicked(const QModelIndex& index) {
    if (const NodePtr node = model ? model->nodeAt(index) : NodePtr())
        revealItem(node->url);
}

void AppController::ctxReveal() {
    if (menuNode)
        revealItem(menuNode->url);
}
