// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <optional>
#include <sys/types.h>

// Whether the disk behind a block device is built in: neither removable nor attached
// over USB, as sysfs tells. Partitions and mapped devices (encryption, LVM) are
// followed down to the disk. Nothing when the device has no entry there (FUSE,
// a mount table from elsewhere).
std::optional<bool> isInternalDisk(dev_t device, const QByteArray& sysRoot = "/sys");
