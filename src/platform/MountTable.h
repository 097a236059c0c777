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
};

// The browsable, local, not hidden mounts in the table's order, each device once.
// Empty when the table cannot be read.
QList<MountEntry> browsableLocalMounts(const MountTableFiles& files = {});

// The same mounts with their names, capacities and kind of disk looked up.
QList<VolumeInfo> mountedVolumes(const MountTableFiles& files = {});
