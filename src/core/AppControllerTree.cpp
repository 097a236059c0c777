// The size tree's part of the controller: listing folders and applying measurements.
#include "app/AppController.h"
#include "core/FolderListing.h"
#include "core/ListingReceiver.h"
#include "core/TreeDisplay.h"

#include <algorithm>

bool AppController::isShown(const Node& node) const {
    return display && display->isShown(node);
}

void AppController::ensureListed(const NodePtr& node) {
    if (!node || !node->isDir || node->children)
        return;
    // A listing made before this one, and discarded, counts no more.
    dropListingWork(*node);
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
    auto receiver = std::make_shared<ListingReceiver>(inbox, this, node, wanted);
    listings.insert(node.get(), {wanted, engine->walkFolder(node->url, std::move(receiver))});
}

void AppController::applyListedEntries(const NodePtr& folder,
                                       const std::vector<WalkEntry>& entries) {
    NodeList& children = *folder->children;
    // The outline hears of the new rows once per slice, not once per batch: each
    // announcement makes it lay out the whole open level again.
    if (std::ranges::none_of(unannounced, [&](const auto& run) { return run.first == folder; }))
        unannounced.emplace_back(folder, children.size());
    for (const WalkEntry& entry : entries) {
        NodePtr child =
            Node::make(childPath(folder->url, entry.name), entry.isDir, folder, entry.kind);
        child->indexInParent = int(children.size());
        if (entry.isDir)
            folder->pending += 1;
        else
            child->size = entry.bytes;
        children.push_back(std::move(child));
    }
}

void AppController::announceNewRows() {
    for (const auto& [folder, first] : std::exchange(unannounced, {}))
        // A listing discarded meanwhile has no rows to announce.
        if (display && folder->children && folder->children->size() > first)
            display->rowsAppended(folder, first, folder->children->size() - first);
}

void AppController::applyChildSize(const NodePtr& folder, size_t index, qint64 size) {
    const NodePtr& child = folder->children->at(index);
    child->size = size;
    if (isShown(*child))
        display->redrawRow(child);
    settleOneMeasurement(folder);
}

void AppController::settleOneMeasurement(const NodePtr& folder) {
    if (folder->pending > 1) {
        folder->pending -= 1;
        return;
    }
    const StopFlagPtr wanted = listings.value(folder.get()).wanted;
    // The rows first, so that the sort moves them rather than replacing the level.
    announceNewRows();
    // The sort, with the new layout it brings, is the longest step of a large level: it
    // gets a turn of the event loop of its own. The level counts as measured once sorted.
    QMetaObject::invokeMethod(
        this, [this, folder, wanted] { sortLevel(folder, wanted); }, Qt::QueuedConnection);
}

void AppController::sortLevel(const NodePtr& folder, const StopFlagPtr& wanted) {
    // The display may have had the listing dropped, or started again, meanwhile.
    const auto listing = listings.constFind(folder.get());
    if (!wanted || listing == listings.constEnd() || listing->wanted != wanted || !folder->children)
        return;
    folder->pending = 0;
    const auto largestFirst = [&children = *folder->children] {
        std::stable_sort(children.begin(), children.end(),
                         [](const NodePtr& a, const NodePtr& b) { return a->size > b->size; });
        for (size_t place = 0; place < children.size(); ++place)
            children[place]->indexInParent = int(place);
    };
    if (display)
        display->reorderChildren(folder, largestFirst);
    else
        largestFirst();
    if (display && (isShown(*folder) || folder == rootNode))
        display->redrawRowAndChildren(folder);
}

void AppController::applyFolderTotal(const NodePtr& folder, qint64 size) {
    // The root's total comes from its own listing's walk (or from recompute, when that
    // listing was discarded first); a deeper folder keeps the size its parent's walk
    // gave it, so its level stays in the order it was sorted in.
    if (folder != rootNode)
        return;
    // Listed again after a change on disk: the status line keeps what the action said.
    const bool first = folder->size < 0;
    folder->size = size;
    if (first)
        applyRootTotal(folder);
    else if (display)
        display->redrawRowAndChildren(folder);
}

void AppController::dropListingWork(const Node& folder) {
    const auto found = listings.constFind(&folder);
    if (found == listings.constEnd())
        return;
    found->wanted->stop();
    // The listings below it were made under its flag and are stopped with it.
    for (auto listing = listings.begin(); listing != listings.end();) {
        if (listing->wanted->isStopped()) {
            listing->walk->cancel();
            listing = listings.erase(listing);
        } else {
            ++listing;
        }
    }
}

void AppController::dropTreeWork() {
    treeFlag->stop();
    for (const Listing& listing : std::as_const(listings))
        listing.walk->cancel();
    listings.clear();
    for (const Listing& measurement : std::as_const(remeasures))
        measurement.walk->cancel();
    remeasures.clear();
}
