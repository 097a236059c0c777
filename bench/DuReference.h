// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/ChildProcess.h"

#include <QByteArray>

// The reference every benchmark here is held against: one "du -sk" of the folder, in
// bytes (-1 when du could not be run).
inline qint64 duDiskUsage(const QByteArray& folder) {
    const auto out = runForOutput("/usr/bin/du", {"-sk", "--", folder});
    if (!out)
        return -1;
    bool ok = false;
    const qint64 kib = out->left(out->indexOf('\t')).toLongLong(&ok);
    return ok ? kib * 1024 : -1;
}
