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
};

// The row's values, or nothing for a volume that does not report both capacities or
// whose total is below one byte. A volume that cannot tell its disk counts as internal.
std::optional<ListedVolume> listedVolume(const VolumeInfo& volume);
