// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// A FUSE mount whose program never answers: every call into it waits until the
// connection is given up. Only made inside a mount namespace of the test's own (the
// test runs under tests/in-own-mount-namespace.sh), so that nothing else on the machine
// can get caught in it.
#include <QByteArray>
#include <QFileInfo>
#include <QString>
#include <atomic>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

class HungMount {
public:
    QByteArray mountPoint;

    ~HungMount() { release(); }

    // Mounts at the (existing, empty) folder. Returns why it cannot be had here, if so.
    QString mount(const QByteArray& at) {
        if (geteuid() != 0)
            return QStringLiteral("a FUSE mount of our own needs root");
        if (QFileInfo(QStringLiteral("/proc/self/ns/mnt")).symLinkTarget() ==
            QFileInfo(QStringLiteral("/proc/1/ns/mnt")).symLinkTarget())
            return QStringLiteral("not in a mount namespace of our own: a hung mount would "
                                  "catch other programs (run through in-own-mount-namespace.sh)");
        fd = open("/dev/fuse", O_RDWR | O_CLOEXEC);
        if (fd < 0)
            return QStringLiteral("no /dev/fuse here");
        const QByteArray options =
            "fd=" + QByteArray::number(fd) + ",rootmode=40000,user_id=0,group_id=0";
        if (::mount("sizeloom-test", at.constData(), "fuse.sizeloom-test", MS_NOSUID | MS_NODEV,
                    options.constData()) != 0) {
            close(fd);
            fd = -1;
            return QStringLiteral("FUSE mount refused here");
        }
        mountPoint = at;
        return {};
    }

    // Gives the connection up unless release() comes first: whatever is caught in the
    // mount then goes on, and rescued() tells that it had to.
    void rescueAfter(std::chrono::milliseconds patience) {
        watchdog = std::thread([this, patience] {
            std::unique_lock lock(mutex);
            if (!released.wait_for(lock, patience, [this] { return fd < 0; })) {
                wasRescued = true;
                giveUp();
            }
        });
    }
    bool rescued() const { return wasRescued; }

    // Every call waiting in the mount ends (with ENOTCONN), then the mount goes.
    void release() {
        {
            std::lock_guard lock(mutex);
            giveUp();
        }
        released.notify_all();
        if (watchdog.joinable())
            watchdog.join();
        if (!mountPoint.isEmpty())
            umount2(mountPoint.constData(), MNT_DETACH);
        mountPoint.clear();
    }

private:
    void giveUp() {
        if (fd >= 0)
            close(fd);
        fd = -1;
    }

    int fd = -1;
    std::mutex mutex;
    std::condition_variable released;
    std::thread watchdog;
    std::atomic<bool> wasRescued{false};
};

#define HUNG_MOUNT_OR_SKIP(mount, at)                                                              \
    do {                                                                                           \
        if (const QString skip = (mount).mount(at); !skip.isEmpty())                               \
            QSKIP(qPrintable(skip));                                                               \
    } while (false)
