// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/SafeRead.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int openRegularFile(const QByteArray& path) {
    struct stat before {};
    if (lstat(path.constData(), &before) != 0 || !S_ISREG(before.st_mode))
        return -1;
    const int fd = open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return -1;
    struct stat opened {};
    if (fstat(fd, &opened) != 0 || !S_ISREG(opened.st_mode)) {
        close(fd);
        return -1;
    }
    return fd;
}

std::optional<QByteArray> readRegularFilePrefix(const QByteArray& path, qint64 maxBytes) {
    const int fd = openRegularFile(path);
    if (fd < 0)
        return std::nullopt;
    QByteArray bytes(maxBytes, Qt::Uninitialized);
    qint64 filled = 0;
    while (filled < maxBytes) {
        const ssize_t n = read(fd, bytes.data() + filled, size_t(maxBytes - filled));
        if (n > 0)
            filled += n;
        else if (n == 0 || errno != EINTR)
            break;
    }
    close(fd);
    bytes.truncate(filled);
    return bytes;
}
