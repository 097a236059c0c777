// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>

class QSocketNotifier;
struct libmnt_monitor;

// Tells when a volume is mounted or unmounted: watches the kernel's mount table and
// libmount's userspace table through libmount's monitor, on the thread it lives on.
class MountMonitor : public QObject {
    Q_OBJECT
public:
    explicit MountMonitor(QObject* parent = nullptr);
    ~MountMonitor() override;

    // False when the system offers nothing to watch; changed() then never comes.
    bool isWatching() const { return notifier != nullptr; }

Q_SIGNALS:
    // Once per batch of changes that arrived together.
    void changed();

private:
    void takeChanges();

    libmnt_monitor* monitor = nullptr;
    QSocketNotifier* notifier = nullptr;
};
