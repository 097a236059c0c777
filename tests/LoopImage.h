#pragma once

// A small ext4 image, made and loop-mounted by the real tools, for tests that watch
// volumes come and go. Only root may mount; elsewhere the test is skipped.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <unistd.h>

class LoopImage {
public:
    // The mount point, empty when not mounted.
    QByteArray mountPoint;

    ~LoopImage() { unmount(); }

    // Why a loop mount cannot be tried here at all, or an empty text.
    static QString unavailableReason() {
        if (geteuid() != 0)
            return QStringLiteral("loop-mounting an image needs root");
        if (!QFile::exists(QStringLiteral("/dev/loop-control")))
            return QStringLiteral("no loop devices here (/dev/loop-control is missing)");
        return {};
    }

    // Makes the image with the label and mounts it; skipReason is set when the system
    // refuses loop mounts for want of permission.
    bool mount(const QString& label, QString* skipReason) {
        if (!folder.isValid())
            return false;
        const QString image = folder.filePath(QStringLiteral("volume.img"));
        const QString target = folder.filePath(QStringLiteral("mnt"));
        if (!QDir().mkpath(target) || !run(QStringLiteral("truncate"), {"-s", "8M", image}) ||
            !run(mkfs(), {"-q", "-L", label, image}))
            return false;
        QProcess mounting;
        mounting.start(QStringLiteral("mount"), {"-o", "loop", image, target});
        if (!mounting.waitForFinished(30000))
            return false;
        const QString complaint = QString::fromLocal8Bit(mounting.readAllStandardError());
        if (mounting.exitCode() != 0) {
            if (complaint.contains(QStringLiteral("ermission denied")) ||
                complaint.contains(QStringLiteral("not permitted")) ||
                complaint.contains(QStringLiteral("failed to setup loop device")))
                *skipReason = QStringLiteral("loop mount refused: ") + complaint.trimmed();
            return false;
        }
        mountPoint = QFile::encodeName(target);
        return true;
    }

    bool unmount() {
        if (mountPoint.isEmpty())
            return true;
        if (!run(QStringLiteral("umount"), {QFile::decodeName(mountPoint)}))
            return false;
        mountPoint.clear();
        return true;
    }

private:
    QTemporaryDir folder;

    static QString mkfs() {
        const QString onPath = QStandardPaths::findExecutable(QStringLiteral("mkfs.ext4"));
        return onPath.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("mkfs.ext4"),
                                                                 {"/usr/sbin", "/sbin"})
                                : onPath;
    }

    static bool run(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.start(program, arguments);
        return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit &&
               process.exitCode() == 0;
    }
};

// Makes and mounts the image with the label, or skips the test where loop mounts
// cannot be had (not root, no loop devices, refused for want of permission).
#define LOOP_MOUNT_OR_SKIP(image, label)                                                           \
    do {                                                                                           \
        if (const QString reason = LoopImage::unavailableReason(); !reason.isEmpty())              \
            QSKIP(qPrintable(reason));                                                             \
        QString skipReason;                                                                        \
        const bool mounted = (image).mount(label, &skipReason);                                    \
        if (!skipReason.isEmpty())                                                                 \
            QSKIP(qPrintable(skipReason));                                                         \
        QVERIFY2(mounted, "could not make and mount the image");                                   \
    } while (false)
