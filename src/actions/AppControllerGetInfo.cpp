// Get Info: the file manager's properties window when it has one, else Sizeloom's own.
#include "actions/PropertiesWindow.h"
#include "app/AppController.h"
#include "app/AuxWindow.h"
#include "platform/FileManager.h"

#include <QMainWindow>

void AppController::ctxGetInfo() {
    if (!menuNode)
        return;
    const NodePtr node = menuNode;
    FileManager::showItemProperties(node->url, this, [this, node] { showOwnProperties(node); });
}

void AppController::showOwnProperties(const NodePtr& node) {
    auto* info = new PropertiesWindow(node, this);
    infoWindows.removeAll(nullptr);
    infoWindows.append(info);
    presentCentered(info, window ? window->screen() : nullptr);
}
