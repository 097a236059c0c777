// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/DiskKind.h"

#include "platform/FolderListing.h"
#include "platform/PathInfo.h"
#include "platform/ResolvedPath.h"

#include <QFile>
#include <sys/sysmacros.h>

namespace {

// The first device a mapped device is built on, or nothing for a plain disk.
QByteArray firstSlave(const QByteArray& devicePath) {
    const std::vector<ListedEntry> slaves = listFolder(devicePath + "/slaves");
    return slaves.empty() ? QByteArray() : resolvedPath(slaves.front().path);
}

QByteArray wholeDisk(QByteArray devicePath) {
    // Bounded, so that a looping tree of links cannot keep this going.
    for (int depth = 0; depth < 8 && !devicePath.isEmpty(); ++depth) {
        if (itemExists(devicePath + "/partition"))
            devicePath.truncate(devicePath.lastIndexOf('/'));
        const QByteArray below = firstSlave(devicePath);
        if (below.isEmpty())
            break;
        devicePath = below;
    }
    return devicePath;
}

} // namespace

std::optional<bool> isInternalDisk(dev_t device, const QByteArray& sysRoot) {
    const QByteArray root = resolvedPath(sysRoot);
    const QByteArray disk =
        wholeDisk(resolvedPath(root + "/dev/block/" + QByteArray::number(major(device)) + ':' +
                               QByteArray::number(minor(device))));
    QFile removable(QFile::decodeName(disk + "/removable"));
    if (root.isEmpty() || disk.isEmpty() || !removable.open(QIODevice::ReadOnly))
        return std::nullopt;
    if (removable.readAll().trimmed() == "1")
        return false;
    for (const QByteArray& component : disk.mid(root.size()).split('/'))
        if (component.startsWith("usb"))
            return false;
    return true;
}
