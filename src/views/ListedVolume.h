// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <optional>

struct VolumeInfo;

// What one row of the volumes panel shows.
struct ListedVolume {
    QString name;
    qint64 freeBytes = 0;
    qint64 totalBytes = 0;
    bool internal = true;
    // False for a volume that has not answered: its row shows no figures.
    bool answered = true;
};

// The row's values, or nothing for a volume that answered without both capacities or
// with a total below one byte. A volume that has not answered keeps its row, without
// figures. A volume that cannot tell its disk counts as internal.
std::optional<ListedVolume> listedVolume(const VolumeInfo& volume);
