// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/VolumeLabel.h"

#include "platform/FolderListing.h"
#include "platform/Paths.h"
#include "platform/ResolvedPath.h"

#include <blkid.h>
#include <memory>

namespace {

std::optional<QString> probedLabel(const QByteArray& devicePath) {
    std::unique_ptr<blkid_struct_probe, decltype(&blkid_free_probe)> probe(
        blkid_new_probe_from_filename(devicePath.constData()), &blkid_free_probe);
    if (!probe)
        return std::nullopt;
    blkid_probe_enable_superblocks(probe.get(), 1);
    blkid_probe_set_superblocks_flags(probe.get(), BLKID_SUBLKS_LABEL);
    const char* label = nullptr;
    if (blkid_do_safeprobe(probe.get()) != 0 ||
        blkid_probe_lookup_value(probe.get(), "LABEL", &label, nullptr) != 0)
        return std::nullopt;
    return QString::fromUtf8(label);
}

std::optional<QString> linkedLabel(const QByteArray& devicePath, const QByteArray& folder) {
    const QByteArray device = resolvedPath(devicePath);
    if (device.isEmpty())
        return std::nullopt;
    for (const ListedEntry& link : listFolder(folder))
        if (resolvedPath(link.path) == device)
            return decodeLabelLinkName(lastPathComponent(link.path));
    return std::nullopt;
}

} // namespace

QString decodeLabelLinkName(const QByteArray& linkName) {
    // udev escapes '%' and '\' themselves, so every "\x" starts an escape and the
    // name reads back as percent-encoding.
    return QString::fromUtf8(
        QByteArray::fromPercentEncoding(QByteArray(linkName).replace("\\x", "%")));
}

std::optional<QString> volumeLabel(const QByteArray& devicePath, const QByteArray& byLabelFolder) {
    if (!devicePath.startsWith("/dev/"))
        return std::nullopt;
    if (const auto label = probedLabel(devicePath))
        return label;
    return linkedLabel(devicePath, byLabelFolder);
}
