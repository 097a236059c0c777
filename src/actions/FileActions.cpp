// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/FileActions.h"

#include "actions/CopyProgressDialog.h"
#include "actions/ItemJobs.h"
#include "actions/ItemNaming.h"
#include "actions/NameEditing.h"
#include "actions/PreviewWindow.h"
#include "actions/PropertiesWindow.h"
#include "actions/RenameDialog.h"
#include "actions/SharePicker.h"
#include "platform/FileClipboard.h"
#include "platform/FileManager.h"
#include "platform/FolderHandler.h"
#include "platform/ItemReach.h"
#include "platform/MainThreadInbox.h"
#include "platform/Paths.h"
#include "platform/Previewer.h"
#include "platform/ShareServices.h"
#include "platform/TreeCopy.h"
#include "text/Lang.h"
#include "ui/AuxWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QTimer>
#include <QWidget>

namespace {

struct MenuEntry {
    const char* titleKey; // null for a separator
    void (FileActions::*action)(const ItemRef&);
};

constexpr MenuEntry kEntries[] = {
    {"ctx_reveal", &FileActions::reveal},      {"ctx_quicklook", &FileActions::preview},
    {"ctx_getinfo", &FileActions::properties}, {nullptr, nullptr},
    {"ctx_rename", &FileActions::rename},      {"ctx_duplicate", &FileActions::duplicate},
    {"ctx_trash", &FileActions::trash},        {nullptr, nullptr},
    {"ctx_copy", &FileActions::copy},          {"ctx_copypath", &FileActions::copyPath},
    {"ctx_share", &FileActions::share},        {nullptr, nullptr},
    {"ctx_compress", &FileActions::compress},
};

constexpr std::chrono::seconds kPatienceAtQuit(2);

} // namespace

FileActions::FileActions(QWidget* window, QObject* parent) : QObject(parent), window(window) {}

FileActions::~FileActions() {
    jobs.stopAll();
    // A job caught in a file system that does not answer is left to end with the
    // program; what it made has no final name and goes with it (or with the next
    // action in its folder).
    const QDeadlineTimer deadline = quitDeadline.value_or(QDeadlineTimer(kPatienceAtQuit));
    jobs.waitForAll(std::chrono::milliseconds(deadline.remainingTime()));
}

void FileActions::stopJobs(QDeadlineTimer deadline) {
    jobs.stopAll();
    quitDeadline = deadline;
}

QMenu* FileActions::menuFor(const ItemRef& node, QWidget* parent) {
    auto* menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(node.name);
    for (const MenuEntry& entry : kEntries) {
        if (!entry.titleKey) {
            menu->addSeparator();
            continue;
        }
        QString title = t(QLatin1String(entry.titleKey));
        QAction* item = menu->addAction(title.replace(QLatin1Char('&'), QStringLiteral("&&")));
        connect(item, &QAction::triggered, this,
                [this, node, action = entry.action] { (this->*action)(node); });
    }
    return menu;
}

void FileActions::runJob(const ItemRef& subject, ActionOutcome outcome, Job job,
                         std::function<void(ActionOutcome&, const Outcome<QByteArray>&)> complete) {
    jobs.start([self = QPointer<FileActions>(this), inbox = MainThreadInbox::shared(), subject,
                outcome = std::move(outcome), job = std::move(job),
                complete = std::move(complete)](const std::atomic<bool>& stop) mutable {
        Outcome<QByteArray> result = job(stop);
        inbox->post([self, subject, outcome = std::move(outcome), result = std::move(result),
                     complete = std::move(complete)]() mutable {
            if (!self)
                return;
            outcome.error = result.error();
            if (complete)
                complete(outcome, result);
            // The tree no longer shows what is on disk: its folder is listed again.
            if (outcome.error == kItemChanged && !outcome.changed.isValid())
                outcome.changed = subject;
            Q_EMIT self->finished(outcome);
        });
    });
}

void FileActions::reveal(const ItemRef& node) {
    // Without a file manager on the bus, the folder holding the item is opened with
    // whatever the desktop opens folders with.
    const QByteArray path = node.path;
    FileManager::showItem(
        path, this, [path] { openWithDefaultFolderHandler(deletingLastPathComponent(path)); });
}

void FileActions::preview(const ItemRef& node) {
    previewItem(node, false);
}

void FileActions::togglePreview(const ItemRef& node) {
    if (previewWindow && previewWindow->isVisible()) {
        previewWindow->close();
        return;
    }
    if (node.isValid())
        previewItem(node, true);
}

void FileActions::previewItem(const ItemRef& node, bool toggle) {
    Previewer::showFile(node.path, toggle, this, [this, node] { showOwnPreview(node); });
}

void FileActions::showOwnPreview(const ItemRef& node) {
    if (previewWindow)
        previewWindow->close();
    previewWindow = new PreviewWindow(node, this);
    presentCentered(previewWindow, window ? window->screen() : nullptr);
}

void FileActions::properties(const ItemRef& node) {
    FileManager::showItemProperties(node.path, this, [this, node] { showOwnProperties(node); });
}

void FileActions::showOwnProperties(const ItemRef& node) {
    auto* info = new PropertiesWindow(node, this);
    infoWindows.removeAll(nullptr);
    infoWindows.append(info);
    presentCentered(info, window ? window->screen() : nullptr);
}

QList<PropertiesWindow*> FileActions::ownPropertiesWindows() const {
    QList<PropertiesWindow*> open;
    for (const QPointer<PropertiesWindow>& info : infoWindows)
        if (info)
            open << info;
    return open;
}

void FileActions::retranslate() {
    if (previewWindow)
        previewWindow->retranslate();
    for (const QPointer<PropertiesWindow>& info : std::as_const(infoWindows))
        if (info)
            info->retranslate();
}

void FileActions::rename(const ItemRef& node) {
    const QByteArray oldName = lastPathComponent(node.path);
    const std::optional<QString> typed = askNewName(window, editableName(oldName));
    if (!typed)
        return;
    const RenameRequest request = renameRequest(*typed, oldName);
    if (request.kind == RenameRequest::Nothing)
        return;
    ActionOutcome outcome{FileAction::Rename, node.name};
    // A name with a slash would be a move into another folder: refused, never done.
    if (request.kind == RenameRequest::Invalid) {
        outcome.error = EINVAL;
        Q_EMIT finished(outcome);
        return;
    }
    runJob(
        node, std::move(outcome),
        [location = node.location, newName = request.newName](const std::atomic<bool>&) {
            return renameItem(location, newName);
        },
        [node](ActionOutcome& done, const Outcome<QByteArray>& newPath) {
            if (!newPath)
                return;
            // The opened folder is opened again under its new name.
            if (node.isRoot)
                done.reopen = *newPath;
            else
                done.changed = node;
        });
}

void FileActions::duplicate(const ItemRef& node) {
    const QString title = t(QStringLiteral("ctx_duplicate"));
    auto* dialog = new CopyProgressDialog(window, title, node.name);
    auto copy = std::make_shared<TreeCopy>();
    auto* progress = new QTimer(dialog);
    connect(progress, &QTimer::timeout, dialog,
            [dialog, copy] { dialog->showBytesDone(copy->bytesDone()); });
    progress->start(100);
    // Cancel frees the window at once; the copy removes what it made when it can.
    connect(dialog, &CopyProgressDialog::cancelRequested, dialog, [dialog, copy] {
        copy->cancel();
        dialog->finish();
    });
    dialog->open();
    runJob(
        node, {FileAction::Duplicate, node.name},
        [location = node.location, copy](const std::atomic<bool>& stop) {
            copy->alsoStopOn(stop);
            return duplicateItem(location, *copy);
        },
        [node, dialog = QPointer<CopyProgressDialog>(dialog)](ActionOutcome& done,
                                                              const Outcome<QByteArray>& copied) {
            if (dialog)
                dialog->finish();
            if (copied) {
                done.detail = displayPath(*copied);
                done.changed = node;
            }
        });
}

void FileActions::trash(const ItemRef& node) {
    runJob(
        node, {FileAction::Trash, node.name},
        [location = node.location](const std::atomic<bool>&) { return trashItem(location); },
        [node](ActionOutcome& done, const Outcome<QByteArray>&) {
            // Listed again either way: where the trash failed, the row stays.
            done.changed = node;
        });
}

void FileActions::copy(const ItemRef& node) {
    QGuiApplication::clipboard()->setMimeData(fileCopyMimeData({node.path}).release());
    Q_EMIT finished({FileAction::Copy, node.name});
}

void FileActions::copyPath(const ItemRef& node) {
    // Clipboard text is Unicode: a path that is not UTF-8 goes as it is shown, each
    // byte that is not UTF-8 as U+FFFD. Copy keeps every byte (in the item's URI).
    const QString path = displayPath(node.path);
    QGuiApplication::clipboard()->setText(path);
    ActionOutcome outcome{FileAction::CopyPath, node.name};
    outcome.detail = path;
    Q_EMIT finished(outcome);
}

void FileActions::share(const ItemRef& node) {
    probeShareFacts(node.isFolder, this, [this, node](const ShareFacts& facts) {
        showSharePicker(node, shareServicesFor(facts));
    });
}

void FileActions::showSharePicker(const ItemRef& node, const QList<ShareService>& services) {
    QMenu* picker = makeSharePicker(services, node.path, this, window);
    const QPoint corner = anchorAbove ? anchorAbove(node) : QPoint();
    // Out of the anchor's top edge: the picker sits just above it.
    picker->popup(corner - QPoint(0, picker->sizeHint().height()));
}

void FileActions::compress(const ItemRef& node) {
    ActionOutcome start{FileAction::Compress, node.name};
    start.underWay = true;
    Q_EMIT finished(start);
    runJob(
        node, {FileAction::Compress, node.name},
        [location = node.location](const std::atomic<bool>& stop) {
            return compressItem(location, stop);
        },
        [node](ActionOutcome& done, const Outcome<QByteArray>& archive) {
            if (archive)
                done.detail = displayPath(*archive);
            // Listed again either way, as a failed archive may have left its name.
            done.changed = node;
        });
}
