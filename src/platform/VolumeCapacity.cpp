// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/VolumeCapacity.h"

#include <sys/statvfs.h>

std::optional<VolumeCapacity> volumeCapacity(const QByteArray& mountPoint) {
    struct statvfs info {};
    if (statvfs(mountPoint.constData(), &info) != 0)
        return std::nullopt;
    return VolumeCapacity{qint64(info.f_blocks * info.f_frsize),
                          qint64(info.f_bavail * info.f_frsize),
                          qint64((info.f_blocks - info.f_bfree) * info.f_frsize)};
}
