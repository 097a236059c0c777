// The window's account of what an action came to.
#include "actions/ActionOutcome.h"
#include "actions/ErrorAlert.h"
#include "app/AppController.h"
#include "platform/ItemReach.h"
#include "platform/SystemReason.h"

#include <QLabel>
#include <QMainWindow>

void AppController::reportAction(const ActionOutcome& outcome) {
    const auto say = [this](const QString& text) {
        if (status)
            status->setText(text);
    };
    if (outcome.error == kItemChanged) {
        say(tf(QStringLiteral("item_changed"), {outcome.itemName}));
    } else if (outcome.error == ECANCELED) {
        // What the person cancelled is gone again; nothing to say.
    } else {
        switch (outcome.action) {
        case FileAction::Compress:
            if (outcome.underWay)
                say(t(QStringLiteral("compressing")) + outcome.itemName);
            else if (outcome.error)
                say(tf(QStringLiteral("compress_failed"),
                       {outcome.itemName,
                        systemReason(outcome.error, LangInfo::rawValue(Loc::current))}));
            else
                say(t(QStringLiteral("compressed")) + outcome.detail);
            break;
        case FileAction::Rename:
            if (outcome.error)
                showErrorAlert(window, t(QStringLiteral("rename_title")), outcome.itemName,
                               outcome.error);
            break;
        case FileAction::Duplicate:
            if (outcome.error)
                showErrorAlert(window, t(QStringLiteral("ctx_duplicate")), outcome.itemName,
                               outcome.error);
            break;
        case FileAction::Copy:
            say(t(QStringLiteral("copied")) + outcome.itemName);
            break;
        case FileAction::CopyPath:
            say(t(QStringLiteral("path_copied")) + outcome.detail);
            break;
        default:
            // The trash and the hand-offs to the desktop fail without a word.
            break;
        }
    }
    if (!outcome.reopen.isEmpty())
        openPath(outcome.reopen);
    else if (outcome.changed)
        refreshParent(outcome.changed);
}
