// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// The label of the file system on a device ("/dev/sdb1"): read from the device itself
// when it may be opened, else from the links udev keeps in byLabelFolder, which anyone
// may read. Nothing for a device without a label or a source that is not a device.
std::optional<QString> volumeLabel(const QByteArray& devicePath,
                                   const QByteArray& byLabelFolder = "/dev/disk/by-label");

// A link name of /dev/disk/by-label back to the label: udev writes the bytes it deems
// unsafe in a name as "\xNN".
QString decodeLabelLinkName(const QByteArray& linkName);
