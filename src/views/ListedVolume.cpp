// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/ListedVolume.h"

#include "platform/MountTable.h"

std::optional<ListedVolume> listedVolume(const VolumeInfo& volume) {
    const bool internal = volume.isInternal.value_or(true);
    if (!volume.answered)
        return ListedVolume{volume.name, 0, 0, internal, false};
    if (!volume.totalBytes || !volume.availableBytes || *volume.totalBytes < 1)
        return std::nullopt;
    return ListedVolume{volume.name, *volume.availableBytes, *volume.totalBytes, internal};
}
