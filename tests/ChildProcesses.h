// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// The processes this test program has started and not yet reaped, as the kernel lists
// them: what is still running on our behalf, whatever started it.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <unistd.h>

namespace childprocesses {

// Names of the living children of this process.
inline QByteArrayList names() {
    QByteArrayList found;
    const QByteArray me = QByteArray::number(getpid());
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        // "pid (comm) state ppid ...": the name may hold spaces, so read from its end.
        const QByteArray line = stat.readAll();
        const qsizetype open = line.indexOf('('), close = line.lastIndexOf(')');
        const QByteArrayList rest = line.mid(close + 2).split(' ');
        if (open > 0 && close > open && rest.size() > 1 && rest[1] == me && rest[0] != "Z")
            found << line.mid(open + 1, close - open - 1);
    }
    return found;
}

inline qsizetype count(const QByteArray& name) {
    return names().count(name);
}

} // namespace childprocesses
