// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/Node.h"

#include <QtGlobal>
#include <functional>

// Laying out a level costs an outline in proportion to its rows, so new rows of a large
// level are announced once the level has grown by half (all its layouts together then
// cost about three of the final one), or once they have waited kRowsHeldAtMostMs.
constexpr size_t kRowsAlwaysAnnounced = 2000;
constexpr qint64 kRowsHeldAtMostMs = 250;
constexpr bool worthAnnouncing(size_t shownRows, size_t newRows) {
    return shownRows < kRowsAlwaysAnnounced || newRows >= shownRows / 2;
}

// What the size tree needs from whatever shows it: the controller never talks to a
// view directly, so the outline and test stand-ins plug in here.
class TreeDisplay {
public:
    virtual ~TreeDisplay() = default;
    // A new tree: the root is the one top row, shown open.
    virtual void showNewRoot(const NodePtr& root) = 0;
    // The node has a row on screen: it is in the tree and every ancestor is open.
    virtual bool isShown(const Node& node) const = 0;
    // count children were added at the end of the folder's listing, from first on.
    virtual void rowsAppended(const NodePtr& folder, size_t first, size_t count) = 0;
    // The node's cells show its current fields.
    virtual void redrawRow(const NodePtr& node) = 0;
    // The node's row and its children rows show the current children in their
    // current order (after a sort, a size change of the folder, or a discarded listing).
    virtual void redrawRowAndChildren(const NodePtr& node) = 0;
    // The folder's children are about to be put in another order by `reorder`, which
    // the display calls once, after telling its views and before showing the new order.
    virtual void reorderChildren(const NodePtr& folder, const std::function<void()>& reorder) = 0;
    // What the rows just appended need of the views (their layout) is done now, not
    // left to a later pass of the event loop.
    virtual void layOutNow() {}
    // The folder's listing is about to be discarded: rows showing its children go now,
    // while the children are still there.
    virtual void dropChildren(const NodePtr& folder) = 0;
};
