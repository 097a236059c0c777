// SPDX-License-Identifier: GPL-2.0-or-later
// The size tree's part of the controller: listing folders and applying measurements.
#include "core/ListingReceiver.h"
#include "core/SizeTree.h"
#include "core/TreeDisplay.h"
#include "platform/FolderListing.h"

#include <QTimer>
#include <algorithm>

bool SizeTree::isShown(const Node& node) const {
    return display && display->isShown(node);
}

void SizeTree::ensureListed(const NodePtr& node) {
    if (!node || !node->isDir || node->children)
        return;
    // A listing made before this one, and discarded, counts no more.
    dropListingWork(*node);
    std::erase_if(unannounced, [&](const Unannounced& run) { return run.folder == node; });
    node->children = std::make_unique<NodeList>();
    // The listing itself is outstanding until it has ended; each child folder from
    // when it is listed until it is measured.
    node->pending = 1;
    // Its results count for this listing only: once the listing is discarded (or one
    // above it, or the tree is replaced), its walk stops and what is on its way is
    // ignored.
    const NodePtr folderAbove = node->parent.lock();
    const auto above = listings.constFind(folderAbove.get());
    const StopFlagPtr wanted =
        StopFlag::make(above != listings.constEnd() ? above->wanted : treeFlag);
    listings.insert(node.get(), {wanted, nullptr});
    // The walk starts once the turn that opened the folder is over, and the outline has
    // taken in the change: its workers would otherwise take the cores from that turn.
    // A millisecond later, since with no delay Qt may run it in the same pass.
    QTimer::singleShot(1, this, [this, node, wanted] {
        const auto listing = listings.find(node.get());
        if (listing == listings.end() || listing->wanted != wanted || wanted->isStopped())
            return;
        listing->walk = engine->walkFolder(
            node->url, std::make_shared<ListingReceiver>(inbox, this, node, wanted));
    });
}

void SizeTree::applyListedEntries(const NodePtr& folder, const std::vector<WalkEntry>& entries) {
    NodeList& children = *folder->children;
    // The outline hears of the new rows after a slice, not once per batch: each
    // announcement makes it lay out the whole open level again.
    if (std::ranges::none_of(unannounced,
                             [&](const Unannounced& run) { return run.folder == folder; }))
        unannounced.push_back({folder, children.size(), QDeadlineTimer(kRowsHeldAtMostMs)});
    for (const WalkEntry& entry : entries) {
        NodePtr child =
            Node::make(childPath(folder->url, entry.name), entry.isDir, folder, entry.kind);
        child->indexInParent = int(children.size());
        child->listedIno = entry.ino;
        children.push_back(child);
        if (entry.isDir)
            folder->pending += 1;
        else
            child->setSize(entry.bytes);
    }
}

bool SizeTree::isDue(const Unannounced& run) const {
    // A listing discarded meanwhile has no rows to announce.
    if (!display || !run.folder->children)
        return false;
    return run.held.hasExpired() ||
           worthAnnouncing(run.first, run.folder->children->size() - run.first);
}

void SizeTree::rowsDueNow(const Node& folder) {
    for (Unannounced& run : unannounced)
        if (run.folder.get() == &folder)
            run.held = QDeadlineTimer(0);
}

bool SizeTree::rowsDueForAnnouncement() {
    if (std::ranges::any_of(unannounced, [this](const Unannounced& run) { return isDue(run); }))
        return true;
    lookAtHeldRowsInTime();
    return false;
}

void SizeTree::lookAtHeldRowsInTime() {
    // A listing that stops halfway (on a slow network share) sends no more results to
    // bring its held rows out.
    if (unannounced.empty() || heldRowsTimed)
        return;
    heldRowsTimed = true;
    QTimer::singleShot(kRowsHeldAtMostMs, this, [this] {
        heldRowsTimed = false;
        showDueRows();
    });
}

void SizeTree::showDueRows() {
    // The outline lays the new rows out at once, in this pass of the event loop, rather
    // than in the next, where the next slice of results may run.
    if (announceNewRows() && display)
        display->layOutNow();
}

bool SizeTree::announceNewRows() {
    // Sorted out before anything is announced: the display may call back into the
    // controller while it takes in new rows.
    std::vector<Unannounced> due;
    for (Unannounced& run : std::exchange(unannounced, {})) {
        if (isDue(run))
            due.push_back(std::move(run));
        else if (display && run.folder->children)
            unannounced.push_back(std::move(run));
    }
    lookAtHeldRowsInTime();
    bool announced = false;
    for (const Unannounced& run : due)
        if (display && run.folder->children && run.folder->children->size() > run.first) {
            display->rowsAppended(run.folder, run.first, run.folder->children->size() - run.first);
            announced = true;
        }
    return announced;
}

void SizeTree::applyListingEnd(const NodePtr& folder) {
    const bool stillMeasuring = folder->pending > 1;
    settleOneMeasurement(folder);
    // The last rows go out after this slice, however few, unless the sort brings them.
    if (stillMeasuring)
        rowsDueNow(*folder);
}

void SizeTree::applyChildSize(const NodePtr& folder, size_t index, qint64 size) {
    const NodePtr& child = folder->children->at(index);
    child->setSize(size);
    if (isShown(*child))
        display->redrawRow(child);
    settleOneMeasurement(folder);
}

void SizeTree::settleOneMeasurement(const NodePtr& folder) {
    if (folder->pending > 1) {
        folder->pending -= 1;
        return;
    }
    const StopFlagPtr wanted = listings.value(folder.get()).wanted;
    // Sorting is the longest step of a large level, so it has turns of the event loop
    // of its own: one reads the sizes and works out the order, the next moves the rows,
    // and the outline lays the level out once, after that. The level counts as
    // measured once sorted.
    QTimer::singleShot(0, this, [this, folder, wanted] {
        if (isCurrentListing(folder, wanted))
            // A millisecond later: started now, with no delay, Qt may run it in the
            // same pass of the event loop.
            QTimer::singleShot(
                1, this, [this, folder, wanted, places = largestFirstPlaces(*folder->children)] {
                    sortLevel(folder, wanted, places);
                });
    });
}

bool SizeTree::isCurrentListing(const NodePtr& folder, const StopFlagPtr& wanted) const {
    // The display may have had the listing dropped, or started again, meanwhile.
    const auto listing = listings.constFind(folder.get());
    return wanted && listing != listings.constEnd() && listing->wanted == wanted &&
           folder->children;
}

void SizeTree::sortLevel(const NodePtr& folder, const StopFlagPtr& wanted,
                         const std::vector<int>& places) {
    if (!isCurrentListing(folder, wanted) || places.size() != folder->children->size())
        return;
    folder->pending = 0;
    // The rows first, so that the sort moves them rather than replacing the level.
    rowsDueNow(*folder);
    announceNewRows();
    const auto largestFirst = [&] { moveToPlaces(*folder->children, places); };
    if (display)
        display->reorderChildren(folder, largestFirst);
    else
        largestFirst();
    if (display && (isShown(*folder) || folder == rootNode))
        display->redrawRowAndChildren(folder);
}

void SizeTree::applyFolderTotal(const NodePtr& folder, qint64 size) {
    // The root's total comes from its own listing's walk (or from recompute, when that
    // listing was discarded first); a deeper folder keeps the size its parent's walk
    // gave it, so its level stays in the order it was sorted in.
    if (folder != rootNode)
        return;
    // Listed again after a change on disk: the status line keeps what the action said.
    const bool first = folder->size() < 0;
    folder->setSize(size);
    if (first)
        applyRootTotal(folder);
    else if (display)
        display->redrawRowAndChildren(folder);
}

void SizeTree::dropListingWork(const Node& folder) {
    const auto found = listings.constFind(&folder);
    if (found == listings.constEnd())
        return;
    found->wanted->stop();
    // The listings below it were made under its flag and are stopped with it.
    for (auto listing = listings.begin(); listing != listings.end();) {
        if (listing->wanted->isStopped()) {
            if (listing->walk)
                listing->walk->cancel();
            listing = listings.erase(listing);
        } else {
            ++listing;
        }
    }
}

void SizeTree::dropTreeWork() {
    treeFlag->stop();
    for (const Listing& listing : std::as_const(listings))
        if (listing.walk)
            listing.walk->cancel();
    listings.clear();
    for (const Listing& measurement : std::as_const(remeasures))
        measurement.walk->cancel();
    remeasures.clear();
}
