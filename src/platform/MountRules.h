// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

struct libmnt_fs;

// The rules that pick, from one mount-table entry alone, the volumes a person keeps
// files on. Whether the entry repeats a device listed earlier is the table's to say.

// "/" and /home are listed whatever else holds for them.
bool isAlwaysListed(const QByteArray& mountPoint);

// Under a place the system keeps for itself (/boot, /proc, /sys, /dev, /run but for
// /run/media, /snap, /var/lib).
bool isSystemMountPoint(const QByteArray& mountPoint);

// A file system a person stores files on: a block device or a FUSE mount that shows
// its whole tree, not a kernel or pseudo file system and not a system mount.
bool isBrowsableMount(libmnt_fs* fs);

// Not reached over a network.
bool isLocalMount(libmnt_fs* fs);

// Marked to be kept out of file managers' sight ("x-gvfs-hide").
bool isHiddenMount(libmnt_fs* fs);
