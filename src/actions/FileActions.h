// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "actions/ActionJobs.h"
#include "actions/ActionOutcome.h"
#include "actions/PreviewWindow.h"
#include "core/ItemRef.h"
#include "platform/Outcome.h"

#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>

class PropertiesWindow;
class QMenu;
class QWidget;
enum class ShareService;

// The actions on a row's item: the context menu and what each of its entries does. What
// changes the disk runs on threads of its own and acts only on the item the row showed;
// every action's outcome is reported through `finished`.
class FileActions : public QObject {
    Q_OBJECT
public:
    // Dialogs and windows of the actions belong to `window`.
    explicit FileActions(QWidget* window, QObject* parent = nullptr);
    // Running jobs are asked to stop and waited for until the quit deadline (two
    // seconds from here unless set).
    ~FileActions() override;

    // Where the share picker hangs for an item (the top-left corner of its row, in
    // global coordinates); set by the window.
    std::function<QPoint(const ItemRef&)> anchorAbove;

    // A new menu of the actions for the item, in the language of the moment; it deletes
    // itself when closed.
    QMenu* menuFor(const ItemRef& node, QWidget* parent);

    void reveal(const ItemRef& node);
    void preview(const ItemRef& node);
    // Space: the item's preview opens, or an open one closes.
    void togglePreview(const ItemRef& node);
    void properties(const ItemRef& node);
    void rename(const ItemRef& node);
    void duplicate(const ItemRef& node);
    void trash(const ItemRef& node);
    void copy(const ItemRef& node);
    void copyPath(const ItemRef& node);
    void share(const ItemRef& node);
    void compress(const ItemRef& node);

    // The open preview and properties windows in the language of the moment.
    void retranslate();
    // Sizeloom's own preview and properties windows, while open.
    PreviewWindow* ownPreview() const { return previewWindow; }
    QList<PropertiesWindow*> ownPropertiesWindows() const;
    // Asks the running jobs to stop; they are waited for at most until `deadline` when
    // this goes.
    void stopJobs(QDeadlineTimer deadline);

Q_SIGNALS:
    void finished(const ActionOutcome& outcome);

private:
    using Job = std::function<Outcome<QByteArray>(const std::atomic<bool>& stop)>;
    // Runs the job on its own thread; its outcome comes back here, to be completed by
    // `complete` and reported. Where the subject turned out changed on disk, its folder
    // is listed again.
    void runJob(const ItemRef& subject, ActionOutcome outcome, Job job,
                std::function<void(ActionOutcome&, const Outcome<QByteArray>&)> complete = {});
    void previewItem(const ItemRef& node, bool toggle);
    void showOwnPreview(const ItemRef& node);
    void showOwnProperties(const ItemRef& node);
    void showSharePicker(const ItemRef& node, const QList<ShareService>& services);

    QWidget* const window;
    ActionJobs jobs;
    std::optional<QDeadlineTimer> quitDeadline;
    // Sizeloom's own preview and properties windows, while open.
    QPointer<PreviewWindow> previewWindow;
    QList<QPointer<PropertiesWindow>> infoWindows;
};
