// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/Outcome.h"

#include <QByteArray>

// Renames the entry `from` of the folder open as folderFd to `to` in the same folder,
// never replacing anything at `to`. A change of letter case only works on file systems
// that ignore case. Fails with EEXIST when `to` is taken.
Done renameNoReplaceAt(int folderFd, const QByteArray& from, const QByteArray& to);

// The same without renameat2's RENAME_NOREPLACE, for file systems that refuse the flag:
// a hard link then unlink where hard links work, else the destination reserved by
// creating it exclusively and then replaced by the item. Used by renameNoReplaceAt.
Done renameNoReplaceByHandAt(int folderFd, const QByteArray& from, const QByteArray& to);
