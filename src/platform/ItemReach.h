// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/FileId.h"
#include "platform/Outcome.h"
#include "platform/UniqueFd.h"

#include <QByteArray>
#include <sys/stat.h>

// Where a row's item was when the row was measured: below the opened folder, with the
// identity it had then.
struct ItemLocation {
    // The opened folder as the person gave it, and its own identity (its stat).
    QByteArray root;
    FileId rootId;
    // The path below the opened folder; empty for the opened folder itself.
    QByteArray relative;
    // The inode its folder's listing gave it, and that folder's device.
    quint64 listedIno = 0;
    quint64 folderDev = 0;
};

// The item reached again: its folder open (for *at calls), its name there and its stat.
struct ReachedItem {
    UniqueFd folder;
    QByteArray name;
    struct stat st {};
    // Its path as the actions that take paths (the trash) need it.
    QByteArray path;
};

// The errno reachItem gives when the item is not the one the row showed: replaced,
// moved, reached through a symbolic link that was not there, or gone.
inline constexpr int kItemChanged = ESTALE;

// Reaches the item from the opened folder, opening every folder below it without
// following symbolic links, and checks that it is the file the row was measured with.
// Blocks; for a worker.
Outcome<ReachedItem> reachItem(const ItemLocation& location);

// The inode number that the folder's listing gives for the entry, 0 when it lists none.
quint64 listedInode(int folderFd, const QByteArray& name);
