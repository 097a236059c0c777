#include "core/PathInfo.h"

#include <climits>
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
