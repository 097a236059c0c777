// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>
#include <sys/types.h>

// Where the mount tables are read from; tests hand in their own files.
struct MountTableFiles {
    // The kernel's table in mountinfo form; libmount merges its utab into it.
    QByteArray mountInfo = "/proc/self/mountinfo";
    // Consulted only for the "x-gvfs-hide" option, which usually lives there.
    QByteArray fstab = "/etc/fstab";
};

// One entry of the mount table that passed the rules.
struct MountEntry {
    QByteArray mountPoint;
    QByteArray source;
    dev_t device = 0;
};

// One mounted volume as the volumes panel reads it.
struct VolumeInfo {
    QByteArray mountPoint;
    // The file-system label, else the last component of the mount point.
    QString name;
    std::optional<qint64> totalBytes;
    std::optional<qint64> availableBytes;
    // Absent when the backing disk cannot be told.
    std::optional<bool> isInternal;
    // False while the volume has not answered: nothing but its place is known then.
    bool answered = true;
};

// The browsable, local, not hidden mounts in the table's order, each device once.
// Empty when the table cannot be read.
QList<MountEntry> browsableLocalMounts(const MountTableFiles& files = {});

// What is mounted at the mount point (a device, "tmpfs", a server's share), from the
// mount table alone; none when nothing is mounted there.
std::optional<QByteArray> mountSourceAt(const QByteArray& mountPoint,
                                        const MountTableFiles& files = {});

// One mount's name, capacity and kind of disk, as the volume itself tells them. Blocks
// for as long as the volume takes to answer, which may be for ever (a FUSE program
// that hangs): never call it on the main thread.
VolumeInfo probeVolume(const MountEntry& mount);

// A volume known only by its place: it has not answered (yet).
VolumeInfo unansweredVolume(const MountEntry& mount);

// The same mounts with their names, capacities and kind of disk looked up.
QList<VolumeInfo> mountedVolumes(const MountTableFiles& files = {});
