// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// What the file actions do on disk, each on a worker thread of its own. Each first
// reaches its item again from the opened folder (reachItem: no link followed, the
// identity checked) and clears partial results that a killed program left in that
// folder; each leaves either its whole result under its final name or nothing.
#include "platform/ItemReach.h"
#include "platform/Outcome.h"

#include <QByteArray>
#include <atomic>
#include <sys/types.h>

class TreeCopy;

// The mode an archive of an item gets: at most the item's read and write permissions
// (a folder's, without execute), and no more than the mask allows.
mode_t archiveMode(mode_t itemMode, mode_t umask);

// A copy beside the item under its first free duplicate name; that name.
Outcome<QByteArray> duplicateItem(const ItemLocation& location, TreeCopy& copy);

// A zip archive beside the item under its first free archive name; that name.
Outcome<QByteArray> compressItem(const ItemLocation& location, const std::atomic<bool>& stop);

// The item renamed in its folder, never replacing anything; its new path.
Outcome<QByteArray> renameItem(const ItemLocation& location, const QByteArray& newName);

// The item moved to the trash; its path as it was.
Outcome<QByteArray> trashItem(const ItemLocation& location);
