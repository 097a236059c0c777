// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/ItemRef.h"
#include "core/SizeIndex.h"

#include <QObject>
#include <memory>

// What views built on the index see of the size tree, read-only: the index, the opened
// folder, an entry as an item to act on, and word of what changed. A view may keep its
// own pointer to the index for work on other threads: entries are never moved nor freed
// while it lives, and a folder walked again gets new entries beside its old ones.
class IndexSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // The index of the opened folder; none before a folder is opened.
    virtual std::shared_ptr<const SizeIndex> shownIndex() const = 0;
    // The opened folder's entry in it.
    virtual EntryId openedFolder() const = 0;
    // The entry as an item, for an action on it.
    virtual ItemRef itemAt(EntryId id) const = 0;
    // A walk runs: totals below the folders it walks are not final yet.
    virtual bool isWalking() const = 0;

Q_SIGNALS:
    // A new root: another folder opened, or the opened one walked anew into a new index.
    void rootOpened();
    // What is below the folder changed: its walk ended or was stopped, or it was walked
    // again after a change (and its ancestors' totals moved with it).
    void subtreeChanged(EntryId folder);
};
