// SPDX-License-Identifier: GPL-2.0-or-later
// The rows of the size tree's display: new ones announced in batches, each level put
// largest-first once its sizes are in.
#include "core/LevelOrder.h"
#include "core/SizeTree.h"
#include "core/TreeDisplay.h"
#include "platform/FreedMemory.h"

#include <QTimer>
#include <algorithm>

namespace {
constexpr size_t kLargeLevel = 10000;
} // namespace

void SizeTree::noteListed(EntryId folder) {
    // The outline hears of new rows after a slice, not once per run: each announcement
    // makes it lay out the whole open level again.
    if (!display || !display->hasRows(folder))
        return;
    if (std::ranges::none_of(unannounced,
                             [&](const Unannounced& run) { return run.folder == folder; }))
        unannounced.push_back({folder, QDeadlineTimer(kRowsHeldAtMostMs)});
}

bool SizeTree::isDue(const Unannounced& run) const {
    if (!display || !display->hasRows(run.folder))
        return false;
    const size_t shown = announced.value(run.folder);
    return run.held.hasExpired() || worthAnnouncing(shown, tree->childCount(run.folder) - shown);
}

void SizeTree::rowsDueNow(EntryId folder) {
    for (Unannounced& run : unannounced)
        if (run.folder == folder)
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
    // tree while it takes in new rows.
    std::vector<Unannounced> due;
    for (Unannounced& run : std::exchange(unannounced, {})) {
        if (isDue(run))
            due.push_back(run);
        else if (display && display->hasRows(run.folder))
            unannounced.push_back(run);
    }
    lookAtHeldRowsInTime();
    bool told = false;
    for (const Unannounced& run : due) {
        if (!display || !display->hasRows(run.folder))
            continue;
        const size_t shown = announced.value(run.folder);
        const size_t listed = tree->childCount(run.folder);
        if (listed <= shown)
            continue;
        announced.insert(run.folder, listed);
        display->rowsAppended(run.folder, shown, listed - shown);
        told = true;
    }
    return told;
}

void SizeTree::sortWhenMeasured(EntryId folder) {
    if (!display || !display->hasRows(folder))
        return;
    // Sorting is the longest step of a large level, so it has turns of the event loop
    // of its own: one reads the sizes and works out the order, the next moves the rows,
    // and the outline lays the level out once, after that.
    QTimer::singleShot(0, this, [this, folder, sorted = tree] {
        if (sorted != tree || !display || !display->hasRows(folder))
            return;
        // A millisecond later: started now, with no delay, Qt may run it in the same
        // pass of the event loop.
        QTimer::singleShot(1, this, [this, folder, sorted, order = largestFirst(*sorted, folder)] {
            sortLevel(folder, sorted, order);
        });
    });
}

void SizeTree::sortLevel(EntryId folder, const std::shared_ptr<SizeIndex>& sorted,
                         const std::vector<EntryId>& order) {
    if (sorted != tree || !display || !display->hasRows(folder) ||
        order.size() != tree->childCount(folder))
        return;
    // The rows first, so that the sort moves them rather than replacing the level.
    rowsDueNow(folder);
    announceNewRows();
    display->reorderChildren(folder, order);
    display->redrawRowAndChildren(folder);
    // Sorting a large level and taking in its walk leave much memory freed.
    if (order.size() >= kLargeLevel)
        giveBackFreedMemory();
}
