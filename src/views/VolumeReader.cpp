#include "views/VolumeReader.h"

#include <QCoreApplication>
#include <QPointer>
#include <thread>

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
        // A thread of its own, not one of a pool: a volume that never answers keeps it
        // for good, and must not keep anything else waiting.
        std::thread([reader = QPointer<VolumeReader>(this), mount] {
            const VolumeInfo volume = probeVolume(mount);
            if (QCoreApplication* app = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    app,
                    [reader, volume] {
                        if (reader)
                            reader->answered(volume);
                    },
                    Qt::QueuedConnection);
        }).detach();
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
