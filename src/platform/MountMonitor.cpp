// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/MountMonitor.h"

#include <QSocketNotifier>
#include <libmount.h>

MountMonitor::MountMonitor(QObject* parent) : QObject(parent), monitor(mnt_new_monitor()) {
    if (!monitor)
        return;
    // The userspace table may be missing; the kernel's alone is enough to go on.
    const bool kernel = mnt_monitor_enable_kernel(monitor, 1) == 0;
    const bool userspace = mnt_monitor_enable_userspace(monitor, 1, nullptr) == 0;
    const int fd = kernel || userspace ? mnt_monitor_get_fd(monitor) : -1;
    if (fd < 0)
        return;
    notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &MountMonitor::takeChanges);
}

MountMonitor::~MountMonitor() {
    // The notifier goes first: it must not watch a descriptor the monitor closes.
    delete notifier;
    mnt_unref_monitor(monitor);
}

void MountMonitor::takeChanges() {
    // Reading every pending change rearms the descriptor; one signal covers them all.
    const char* file = nullptr;
    int type = 0;
    bool any = false;
    while (mnt_monitor_next_change(monitor, &file, &type) == 0)
        any = true;
    if (any)
        Q_EMIT changed();
}
