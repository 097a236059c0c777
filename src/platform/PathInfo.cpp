// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/PathInfo.h"

#include <climits>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

QByteArray absolutePath(const QByteArray& path) {
    if (path.startsWith('/'))
        return path;
    char cwd[PATH_MAX];
    if (!getcwd(cwd, sizeof cwd))
        return path;
    QByteArray base(cwd);
    if (path.isEmpty())
        return base;
    return base.endsWith('/') ? base + path : base + '/' + path;
}

bool isExistingDirectory(const QByteArray& path) {
    struct stat st {};
    return stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool itemExists(const QByteArray& path) {
    struct stat st {};
    return lstat(path.constData(), &st) == 0;
}

QByteArray expandTilde(const QByteArray& path) {
    if (!path.startsWith('~'))
        return path;
    const qsizetype slash = path.indexOf('/');
    const QByteArray user = path.mid(1, slash < 0 ? -1 : slash - 1);
    const QByteArray rest = slash < 0 ? QByteArray() : path.mid(slash);
    QByteArray home;
    if (user.isEmpty()) {
        home = qgetenv("HOME");
        if (home.isEmpty())
            if (const passwd* entry = getpwuid(getuid()))
                home = entry->pw_dir;
    } else if (const passwd* entry = getpwnam(user.constData())) {
        home = entry->pw_dir;
    }
    if (home.isEmpty())
        return path;
    if (home.size() > 1 && home.endsWith('/'))
        home.chop(1);
    return home + rest;
}
