// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>
#include <sys/types.h>
#include <vector>

// What an item is, as its folder's listing saw it (a link is never a folder); the row's
// icon comes from it without asking the file system again.
enum class ItemKind : quint8 { Folder, File, Link, Other };

struct ListedEntry {
    QByteArray path;
    bool isDir = false;
    ItemKind type = ItemKind::File;
};

// The folder's entries in the order the file system returns them, hidden files kept.
// isDir describes the entry itself: a link to a folder is not a folder. A folder that
// cannot be read lists as empty.
std::vector<ListedEntry> listFolder(const QByteArray& folder);

// What an entry is, from its lstat mode.
ItemKind kindOfMode(mode_t mode);

// What the entry at path is, from the type its folder's listing gave (a DT_ constant),
// asking the file system only when the listing did not say.
ItemKind kindOfEntry(const QByteArray& path, unsigned char type);
