// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "actions/ActionJobs.h"
#include "actions/ActionOutcome.h"
#include "actions/PreviewWindow.h"
#include "core/Node.h"
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
    std::function<QPoint(const Node&)> anchorAbove;

    // A new menu of the actions for the item, in the language of the moment; it deletes
    // itself when closed.
    QMenu* menuFor(const NodePtr& node, QWidget* parent);

    void reveal(const NodePtr& node);
    void preview(const NodePtr& node);
    // Space: the item's preview opens, or an open one closes.
    void togglePreview(const NodePtr& node);
    void properties(const NodePtr& node);
    void rename(const NodePtr& node);
    void duplicate(const NodePtr& node);
    void trash(const NodePtr& node);
    void copy(const NodePtr& node);
    void copyPath(const NodePtr& node);
    void share(const NodePtr& node);
    void compress(const NodePtr& node);

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
    void runJob(const NodePtr& subject, ActionOutcome outcome, Job job,
                std::function<void(ActionOutcome&, const Outcome<QByteArray>&)> complete = {});
    void previewItem(const NodePtr& node, bool toggle);
    void showOwnPreview(const NodePtr& node);
    void showOwnProperties(const NodePtr& node);
    void showSharePicker(const NodePtr& node, const QList<ShareService>& services);

    QWidget* const window;
    ActionJobs jobs;
    std::optional<QDeadlineTimer> quitDeadline;
    // Sizeloom's own preview and properties windows, while open.
    QPointer<PreviewWindow> previewWindow;
    QList<QPointer<PropertiesWindow>> infoWindows;
};
