#include "volumes/ListedVolume.h"

#include "platform/MountTable.h"

std::optional<ListedVolume> listedVolume(const VolumeInfo& volume) {
    if (!volume.totalBytes || !volume.availableBytes || *volume.totalBytes < 1)
        return std::nullopt;
    return ListedVolume{volume.name, *volume.availableBytes, *volume.totalBytes,
                        volume.isInternal.value_or(true)};
}
