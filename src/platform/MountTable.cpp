// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/MountTable.h"

#include "platform/DiskKind.h"
#include "platform/MountRules.h"
#include "platform/Paths.h"
#include "platform/VolumeCapacity.h"
#include "platform/VolumeLabel.h"

#include <QSet>
#include <libmount.h>
#include <memory>

namespace {

using TablePtr = std::unique_ptr<libmnt_table, decltype(&mnt_unref_table)>;

TablePtr readMountInfo(const QByteArray& path) {
    TablePtr table(mnt_new_table(), &mnt_unref_table);
    if (table && mnt_table_parse_mtab(table.get(), path.constData()) != 0)
        table.reset();
    return table;
}

TablePtr readFstab(const QByteArray& path) {
    TablePtr table(mnt_new_table(), &mnt_unref_table);
    if (table && mnt_table_parse_fstab(table.get(), path.constData()) != 0)
        table.reset();
    return table;
}

bool isHiddenByFstab(libmnt_table* fstab, const char* mountPoint) {
    if (!fstab)
        return false;
    libmnt_fs* entry = mnt_table_find_target(fstab, mountPoint, MNT_ITER_BACKWARD);
    return entry && isHiddenMount(entry);
}

} // namespace

QList<MountEntry> browsableLocalMounts(const MountTableFiles& files) {
    QList<MountEntry> mounts;
    const TablePtr table = readMountInfo(files.mountInfo);
    if (!table)
        return mounts;
    const TablePtr fstab = readFstab(files.fstab);
    std::unique_ptr<libmnt_iter, decltype(&mnt_free_iter)> iter(mnt_new_iter(MNT_ITER_FORWARD),
                                                                &mnt_free_iter);
    QSet<dev_t> listedDevices;
    libmnt_fs* fs = nullptr;
    while (iter && mnt_table_next_fs(table.get(), iter.get(), &fs) == 0) {
        if (!isBrowsableMount(fs) || !isLocalMount(fs) || isHiddenMount(fs) ||
            isHiddenByFstab(fstab.get(), mnt_fs_get_target(fs)))
            continue;
        const MountEntry entry{mnt_fs_get_target(fs), mnt_fs_get_source(fs), mnt_fs_get_devno(fs)};
        // A device mounted a second time (bind mounts) is the same volume.
        if (listedDevices.contains(entry.device) && !isAlwaysListed(entry.mountPoint))
            continue;
        listedDevices.insert(entry.device);
        mounts << entry;
    }
    return mounts;
}

std::optional<QByteArray> mountSourceAt(const QByteArray& mountPoint,
                                        const MountTableFiles& files) {
    const TablePtr table = readMountInfo(files.mountInfo);
    if (!table)
        return std::nullopt;
    // The last one mounted there is the one seen.
    libmnt_fs* fs = mnt_table_find_target(table.get(), mountPoint.constData(), MNT_ITER_BACKWARD);
    if (!fs || !mnt_fs_get_source(fs))
        return std::nullopt;
    return QByteArray(mnt_fs_get_source(fs));
}

VolumeInfo unansweredVolume(const MountEntry& mount) {
    VolumeInfo volume;
    volume.mountPoint = mount.mountPoint;
    volume.name = displayPath(lastPathComponent(mount.mountPoint));
    volume.answered = false;
    return volume;
}

VolumeInfo probeVolume(const MountEntry& mount) {
    VolumeInfo volume = unansweredVolume(mount);
    volume.answered = true;
    if (const auto label = volumeLabel(mount.source))
        volume.name = *label;
    if (const auto capacity = volumeCapacity(mount.mountPoint)) {
        volume.totalBytes = capacity->totalBytes;
        volume.availableBytes = capacity->availableBytes;
    }
    volume.isInternal = isInternalDisk(mount.device);
    return volume;
}

QList<VolumeInfo> mountedVolumes(const MountTableFiles& files) {
    QList<VolumeInfo> volumes;
    for (const MountEntry& mount : browsableLocalMounts(files))
        volumes << probeVolume(mount);
    return volumes;
}
