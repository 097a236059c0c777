// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/MountTable.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>

// Reads the mounted volumes without ever waiting on one: the mount table is read at
// once, and each volume is asked for its name, capacity and kind on a thread of its
// own. volumesRead follows as soon as every volume has answered, or when patience runs
// out, with the silent ones known only by their place; a late answer brings another
// volumesRead. A volume that never answers holds one thread and is not asked again
// until it has answered.
class VolumeReader : public QObject {
    Q_OBJECT
public:
    explicit VolumeReader(std::chrono::milliseconds patience, QObject* parent = nullptr);

    void read(const MountTableFiles& files = {});

Q_SIGNALS:
    // The volumes in the mount table's order.
    void volumesRead(const QList<VolumeInfo>& volumes);

private:
    void answered(const VolumeInfo& volume);
    void report();

    QList<MountEntry> mounts;
    // What each volume answered since the latest read began.
    QHash<QByteArray, VolumeInfo> answers;
    // Volumes asked and not yet back, by mount point.
    QSet<QByteArray> asking;
    QTimer patience;
    bool reported = false;
};
