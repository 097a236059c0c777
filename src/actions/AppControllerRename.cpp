// Rename: a new name asked in a dialog, the move never replacing anything.
#include "actions/ErrorAlert.h"
#include "actions/ItemNaming.h"
#include "actions/RenameDialog.h"
#include "app/AppController.h"
#include "core/Node.h"
#include "platform/RenameNoReplace.h"

#include <QMainWindow>
#include <cerrno>

void AppController::ctxRename() {
    const NodePtr node = menuNode;
    if (!node)
        return;
    const std::optional<QString> typed = askNewName(window, node->name());
    if (!typed)
        return;
    const RenameRequest request = renameRequest(*typed, node->name());
    if (request.kind == RenameRequest::Nothing)
        return;
    // A name with a slash would be a move into another folder: refused, never done.
    const int error =
        request.kind == RenameRequest::Invalid
            ? EINVAL
            : renameNoReplace(node->url,
                              childPath(deletingLastPathComponent(node->url), request.newName));
    if (error) {
        showErrorAlert(window, t(QStringLiteral("rename_title")), node->name(), error);
        return;
    }
    refreshParent(node);
}
