// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Builds real files and folders for tests, with paths kept as bytes so that names
// that are not UTF-8 can be made too.
#include "platform/ChildProcess.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <QTest>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace temptree {

// A temporary folder removed with everything in it, also names that are not UTF-8
// (which QTemporaryDir cannot delete).
class Dir {
public:
    Dir() { dir.setAutoRemove(false); }
    ~Dir() { runForOutput("/bin/rm", {"-rf", "--", bytes()}); }
    bool isValid() const { return dir.isValid(); }
    QByteArray bytes() const { return QFile::encodeName(dir.path()); }
    // A new empty folder inside, one per test case.
    QByteArray freshFolder() {
        const QByteArray folder = bytes() + "/case" + QByteArray::number(++made);
        return mkdir(folder.constData(), 0755) == 0 ? folder : QByteArray();
    }

private:
    QTemporaryDir dir;
    int made = 0;
};

inline QByteArray join(const QByteArray& folder, const QByteArray& name) {
    return folder + '/' + name;
}

inline void makeDir(const QByteArray& path) {
    QVERIFY(mkdir(path.constData(), 0755) == 0);
}

// A file with `bytes` bytes of non-zero data, synced so that it is really allocated.
inline void writeFile(const QByteArray& path, qint64 bytes) {
    const bool synced = bytes > 0;
    const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    QVERIFY(fd >= 0);
    const QByteArray chunk(64 * 1024, 'x');
    while (bytes > 0) {
        const qint64 n = std::min<qint64>(bytes, chunk.size());
        QVERIFY(write(fd, chunk.constData(), size_t(n)) == n);
        bytes -= n;
    }
    QVERIFY(!synced || fsync(fd) == 0);
    close(fd);
}

// A new file holding exactly `bytes`; never replaces one that is there.
inline void writeBytes(const QByteArray& path, const QByteArray& bytes) {
    const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    QVERIFY(fd >= 0);
    QCOMPARE(write(fd, bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
    close(fd);
}

inline qint64 statBlocksBytes(const QByteArray& path) {
    struct stat st {};
    if (lstat(path.constData(), &st) != 0)
        return -1;
    return qint64(st.st_blocks) * 512;
}

// The independent reference: the real du, read here with its own tiny parser.
inline qint64 duBytes(const QByteArray& path) {
    const auto out = runForOutput("/usr/bin/du", {"-sk", path});
    if (!out)
        return -1;
    return out->left(out->indexOf('\t')).toLongLong() * 1024;
}

} // namespace temptree
