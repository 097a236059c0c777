// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ProcessUmask.h"

#include "platform/SafeRead.h"

#include <QList>

mode_t processUmask() {
    const auto status = readRegularFilePrefix("/proc/self/status", 64 * 1024);
    if (status) {
        for (const QByteArray& line : status->split('\n')) {
            if (!line.startsWith("Umask:"))
                continue;
            bool ok = false;
            const uint mask = line.mid(6).trimmed().toUInt(&ok, 8);
            if (ok)
                return mode_t(mask & 0777);
        }
    }
    return 022; // the usual mask, where the kernel does not say
}
