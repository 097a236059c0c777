// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/MeasureEngine.h"
#include "core/Node.h"
#include "platform/MainThreadInbox.h"
#include "platform/StopFlag.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <memory>
#include <optional>
#include <vector>

class QThreadPool;
class TreeDisplay;

// The size tree of the opened folder: its nodes, the engine that measures them and the
// hand-off of results to whatever shows the tree. A folder is listed when it is first
// shown, by one walk that also measures its children; each level is put largest-first
// once its sizes are in.
class SizeTree : public QObject {
    Q_OBJECT
public:
    explicit SizeTree(QObject* parent = nullptr);
    // Stops every walk; waits for the workers until the deadline at most.
    ~SizeTree() override;

    // Makes the folder the root of a new tree and starts measuring it.
    void open(const QByteArray& path);
    const NodePtr& root() const { return rootNode; }
    // Lists an unlisted folder and measures its children, in one walk of its tree.
    void ensureListed(const NodePtr& node);
    // Re-measures the node, then each ancestor in turn up to the root.
    void recompute(const NodePtr& node);
    // After a change on disk: lists the node's folder afresh and re-measures it upwards.
    void refreshParent(const NodePtr& node);

    // Whatever shows the tree (the outline's model); none by default.
    void setDisplay(TreeDisplay* display);
    // How long the destructor may wait for workers caught in a file system.
    void setQuitDeadline(QDeadlineTimer deadline);
    // The workers' pool, for tests that need to see what it holds.
    QThreadPool& workers() const { return *sizeQueue; }

Q_SIGNALS:
    // A new root, not measured yet.
    void rootOpened(const NodePtr& root);
    // The root's total and listing are in for the first time.
    void rootMeasured(const NodePtr& root);

private:
    // A folder's listing walk arrives through its receiver, in this order: entries, the
    // end of the listing, then each child folder's size as its subtree is done, and the
    // folder's own total last.
    friend class ListingReceiver;
    void applyListedEntries(const NodePtr& folder, const std::vector<WalkEntry>& entries);
    void applyChildSize(const NodePtr& folder, size_t index, qint64 size);
    // Tells the display of the rows listed since the last time that are due: a small
    // level's at once; a large level's once it has grown enough or its rows have waited
    // long enough; a level's last rows when its listing has ended.
    // True when it told the display of any.
    bool announceNewRows();
    // Some listed rows are due to be announced. Rows held back get a look when their
    // time is up, even if no more results come.
    bool rowsDueForAnnouncement();
    // The folder's rows listed so far are announced next time, however few.
    void rowsDueNow(const Node& folder);
    void lookAtHeldRowsInTime();
    // The rows due are announced and laid out, in one pass of the event loop.
    void showDueRows();
    void applyListingEnd(const NodePtr& folder);
    void applyFolderTotal(const NodePtr& folder, qint64 size);
    // One of the folder's outstanding measurements (or its listing) is in: once none
    // is left, the level is sorted largest first over the event loop's next two turns.
    void settleOneMeasurement(const NodePtr& folder);
    // The folder's listing is still the one made under `wanted`.
    bool isCurrentListing(const NodePtr& folder, const StopFlagPtr& wanted) const;
    // Moves the level's children to their places, unless the listing they were
    // measured for is gone.
    void sortLevel(const NodePtr& folder, const StopFlagPtr& wanted,
                   const std::vector<int>& places);
    void applyRootTotal(const NodePtr& root);
    // Stops the folder's current listing walk and every walk of the listings below it.
    void dropListingWork(const Node& folder);
    // Stops every walk and measurement of the tree on screen.
    void dropTreeWork();
    bool isShown(const Node& node) const;

    NodePtr rootNode;
    // Runs every measurement; at most six at once.
    QThreadPool* const sizeQueue;
    TreeDisplay* display = nullptr;
    // Until when the destructor waits for workers: two seconds from then unless set.
    std::optional<QDeadlineTimer> quitDeadline;
    // Stopped when the tree goes: no measurement starts after that, and the du
    // children still running are ended.
    const StopFlagPtr lifeFlag;
    // The work of the tree on screen; replaced, and the old one stopped, on every open.
    StopFlagPtr treeFlag;
    // Each listed folder's walk (none for the first millisecond), with the flag that
    // says whether its results are still wanted (stopped with the listing above it).
    struct Listing {
        StopFlagPtr wanted;
        std::shared_ptr<WalkTicket> walk;
    };
    QHash<const Node*, Listing> listings;
    // Measurements started by recompute, one per node at most.
    QHash<const Node*, Listing> remeasures;
    // Measures every size; its walks run on sizeQueue.
    std::unique_ptr<MeasureEngine> engine;
    // Brings the engine's results to the main thread in slices.
    const std::shared_ptr<MainThreadInbox> inbox;
    // Folders with rows listed but not yet announced, the first of those rows, and how
    // long they may still wait (none once the listing has ended).
    struct Unannounced {
        NodePtr folder;
        size_t first;
        QDeadlineTimer held;
    };
    std::vector<Unannounced> unannounced;
    bool isDue(const Unannounced& run) const;
    // A look at the rows held back is due.
    bool heldRowsTimed = false;
};
