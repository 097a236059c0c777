// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/Outcome.h"
#include "platform/UniqueFd.h"

#include <QByteArray>
#include <sys/types.h>

// A result being made (a copy, an archive) lives under a hidden name beside the place it
// will take, ".NAME.sizeloom-partial-XXXXXX", and is locked (flock) for as long as it is
// being made. Only a complete result takes its final name, in one step that never
// replaces anything. What a killed program left behind carries no lock any more, and is
// removed the next time an action works in that folder.
struct PartialItem {
    QByteArray name;
    // Holds the lock; for a file, also the descriptor to write it through.
    UniqueFd fd;
};

// Whether the name is that of a partial result.
bool isPartialName(const QByteArray& name);

// A new locked partial folder (mode 0700 while it fills) or file (0600) in the folder,
// named after `finalName`.
Outcome<PartialItem> createPartialFolder(int folderFd, const QByteArray& finalName);
Outcome<PartialItem> createPartialFile(int folderFd, const QByteArray& finalName);

// Gives the partial item its final name, unless that name is taken (EEXIST).
Done publishPartial(int folderFd, const QByteArray& partialName, const QByteArray& finalName);

// Removes the item and, for a folder, everything in it, never following a link.
void removeItemTree(int folderFd, const QByteArray& name);

// Removes the partial results in the folder that nobody is making any more; returns how
// many went.
int sweepAbandonedPartials(int folderFd);
