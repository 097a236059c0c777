// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <atomic>
#include <optional>
#include <sys/types.h>

// What the file system says about one item, the item itself (a symbolic link is
// described, not followed). Read on a worker: owner names may come from a network
// directory, and the type from the file's first bytes.
struct ItemFacts {
    bool found = false;
    mode_t mode = 0;
    qint64 allocatedBytes = 0;
    qint64 apparentBytes = 0;
    QDateTime modified;
    QDateTime changed;
    QDateTime accessed;
    // Names, or the numbers when the system knows no name for them.
    QString owner;
    QString group;
    // Where a symbolic link points, as stored in the link.
    QByteArray linkTarget;
    // The MIME type: from the name and first bytes for a regular file, from the kind
    // (inode/directory, inode/fifo, …) for everything else.
    QString mimeType;
};

ItemFacts readItemFacts(const QByteArray& path);

// The mode as ls -l shows it: the kind, then rwx for owner, group and others, with
// setuid, setgid and sticky bits in their usual places ("drwxr-xr-t").
QString permissionText(mode_t mode);

// Everything inside a folder, walked without following links as du does.
struct FolderTally {
    qint64 items = 0;
    // Size on disk and apparent size of the folder and everything in it, each file
    // with several hard links counted once.
    qint64 allocatedBytes = 0;
    qint64 apparentBytes = 0;
};

// None when the folder cannot be walked or stop was set during the walk.
std::optional<FolderTally> tallyFolder(const QByteArray& folder, const std::atomic<bool>& stop);
