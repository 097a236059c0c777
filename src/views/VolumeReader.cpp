// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/VolumeReader.h"

#include "platform/BackgroundJob.h"

VolumeReader::VolumeReader(std::chrono::milliseconds patience_, QObject* parent) : QObject(parent) {
    patience.setSingleShot(true);
    patience.setInterval(patience_);
    connect(&patience, &QTimer::timeout, this, &VolumeReader::report);
}

void VolumeReader::read(const MountTableFiles& files) {
    mounts = browsableLocalMounts(files);
    answers.clear();
    reported = false;
    for (const MountEntry& mount : std::as_const(mounts)) {
        if (asking.contains(mount.mountPoint))
            continue;
        asking.insert(mount.mountPoint);
        // A volume that never answers keeps its thread for good, and nothing else waiting.
        runInBackground<VolumeInfo>(
            this, [mount] { return probeVolume(mount); },
            [this](VolumeInfo volume) { answered(volume); });
    }
    if (mounts.isEmpty())
        report();
    else
        patience.start();
}

void VolumeReader::answered(const VolumeInfo& volume) {
    asking.remove(volume.mountPoint);
    answers.insert(volume.mountPoint, volume);
    const bool listed = std::ranges::any_of(
        mounts, [&](const MountEntry& mount) { return mount.mountPoint == volume.mountPoint; });
    if (!listed)
        return;
    const bool allIn = std::ranges::all_of(
        mounts, [&](const MountEntry& mount) { return answers.contains(mount.mountPoint); });
    if (allIn || reported) {
        patience.stop();
        report();
    }
}

void VolumeReader::report() {
    QList<VolumeInfo> volumes;
    for (const MountEntry& mount : std::as_const(mounts))
        volumes << answers.value(mount.mountPoint, unansweredVolume(mount));
    reported = true;
    Q_EMIT volumesRead(volumes);
}
