// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/SizeIndex.h"

#include <QtGlobal>
#include <memory>
#include <vector>

// Laying out a level costs an outline in proportion to its rows, so new rows of a large
// level are announced once the level has grown by half (all its layouts together then
// cost about three of the final one), or once they have waited kRowsHeldAtMostMs.
constexpr size_t kRowsAlwaysAnnounced = 2000;
constexpr qint64 kRowsHeldAtMostMs = 250;
constexpr bool worthAnnouncing(size_t shownRows, size_t newRows) {
    return shownRows < kRowsAlwaysAnnounced || newRows >= shownRows / 2;
}

// What the size tree needs from whatever shows it: the tree never talks to a view
// directly, so the outline and test stand-ins plug in here. A folder's rows are its
// entries in the index, listed order until its level is put in order.
class TreeDisplay {
public:
    virtual ~TreeDisplay() = default;
    // A new tree: the root is the one top row, shown open.
    virtual void showNewRoot(const std::shared_ptr<const SizeIndex>& index, EntryId root) = 0;
    // The folder's rows are shown: it has a row, every ancestor is open, and it is open.
    virtual bool isShown(EntryId folder) const = 0;
    // The folder's rows are in the display (whether or not they are on screen).
    virtual bool hasRows(EntryId folder) const = 0;
    // Entries listed at positions first .. first + count - 1 of the folder are new.
    virtual void rowsAppended(EntryId folder, size_t first, size_t count) = 0;
    // The entry's cells show its current sizes.
    virtual void redrawRow(EntryId id) = 0;
    // The folder's row and its children's rows show their current sizes and shares.
    virtual void redrawRowAndChildren(EntryId folder) = 0;
    // The folder's rows go in this order, every child once.
    virtual void reorderChildren(EntryId folder, const std::vector<EntryId>& order) = 0;
    // What the rows just appended need of the views (their layout) is done now, not
    // left to a later pass of the event loop.
    virtual void layOutNow() {}
    // The folder's entries are about to be replaced (it is walked again): rows showing
    // them go now.
    virtual void dropChildren(EntryId folder) = 0;
    // Every shown row shows its current state (after a walk was stopped).
    virtual void redrawAll() = 0;
};
