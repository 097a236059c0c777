// The right-click menu: ten actions for the row's item, in three groups.
#include "app/AppController.h"
#include "ui/TreeModel.h"
#include "ui/TreeOutlineView.h"

#include <QMenu>

namespace {

struct MenuEntry {
    const char* titleKey; // null for a separator
    void (AppController::*action)();
};

constexpr MenuEntry kEntries[] = {
    {"ctx_reveal", &AppController::ctxReveal},     {"ctx_quicklook", &AppController::ctxQuickLook},
    {"ctx_getinfo", &AppController::ctxGetInfo},   {nullptr, nullptr},
    {"ctx_rename", &AppController::ctxRename},     {"ctx_duplicate", &AppController::ctxDuplicate},
    {"ctx_trash", &AppController::ctxTrash},       {nullptr, nullptr},
    {"ctx_copy", &AppController::ctxCopyFile},     {"ctx_copypath", &AppController::ctxCopyPath},
    {"ctx_share", &AppController::ctxShare},       {nullptr, nullptr},
    {"ctx_compress", &AppController::ctxCompress},
};

} // namespace

QMenu* AppController::buildContextMenu(int row) {
    if (row < 0 || !outline || !model)
        return nullptr;
    const NodePtr node = model->nodeAt(outline->indexAtRow(row));
    if (!node)
        return nullptr;
    menuNode = node;

    // A new menu every time, so its titles are in the language of the moment.
    auto* menu = new QMenu(outline);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(node->name());
    for (const MenuEntry& entry : kEntries) {
        if (!entry.titleKey) {
            menu->addSeparator();
            continue;
        }
        QString title = t(QLatin1String(entry.titleKey));
        QAction* item = menu->addAction(title.replace(QLatin1Char('&'), QStringLiteral("&&")));
        connect(item, &QAction::triggered, this, entry.action);
    }
    return menu;
}
