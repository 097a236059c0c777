// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <optional>

struct VolumeCapacity {
    qint64 totalBytes = 0;
    // What an ordinary user may still write (the root reserve left out), as df shows it.
    qint64 availableBytes = 0;
    // Blocks in use, as df counts them: all of them less the free ones.
    qint64 usedBytes = 0;
};

// The capacity of the file system mounted at the path; nothing when it cannot be read.
std::optional<VolumeCapacity> volumeCapacity(const QByteArray& mountPoint);
