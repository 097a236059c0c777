// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// A small file-system image (ext4 unless told otherwise), made and loop-mounted by the
// real tools, for tests that watch volumes come and go or need a second file system.
// Only root may mount; elsewhere the test is skipped.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <unistd.h>

class LoopImage {
public:
    // The mount point, empty when not mounted.
    QByteArray mountPoint;

    ~LoopImage() { unmount(); }

    // Makes the image with the label and mounts it; type is "ext4", "vfat" or "exfat",
    // size as truncate takes it ("8M"). Returns why a loop mount cannot be had here (not
    // root, no loop devices, refused for want of permission, a type this kernel lacks),
    // if so; mountPoint stays empty when the mount failed for another reason.
    QString mount(const QString& label, const QString& type = "ext4", const QString& size = "8M") {
        if (geteuid() != 0)
            return QStringLiteral("loop-mounting an image needs root");
        if (!QFile::exists(QStringLiteral("/dev/loop-control")))
            return QStringLiteral("no loop devices here (/dev/loop-control is missing)");
        const QString image = folder.filePath(QStringLiteral("volume.img"));
        const QString target = folder.filePath(QStringLiteral("mnt"));
        const QString mkfs = QStandardPaths::findExecutable("mkfs." + type, {"/usr/sbin", "/sbin"});
        const QStringList labelled = type == "vfat"    ? QStringList{"-n", label}
                                     : type == "exfat" ? QStringList{"-L", label}
                                                       : QStringList{"-q", "-L", label};
        QString complaint;
        if (!folder.isValid() || !QDir().mkpath(target) || !run("truncate", {"-s", size, image}) ||
            !run(mkfs, labelled + QStringList{image}) ||
            !run("mount", {"-t", type, "-o", "loop", image, target}, &complaint)) {
            if (complaint.contains(QLatin1String("unknown filesystem type")))
                return QStringLiteral("this kernel cannot mount ") + type;
            for (const char* refusal :
                 {"ermission denied", "not permitted", "failed to setup loop"})
                if (complaint.contains(QLatin1String(refusal)))
                    return QStringLiteral("loop mount refused: ") + complaint.trimmed();
            return {};
        }
        mountPoint = QFile::encodeName(target);
        return {};
    }

    bool unmount() {
        if (mountPoint.isEmpty() || run("umount", {QFile::decodeName(mountPoint)}))
            mountPoint.clear();
        return mountPoint.isEmpty();
    }

    // Where the image file is, so a test can fill or remount the volume.
    QString imagePath() const { return folder.filePath(QStringLiteral("volume.img")); }

private:
    QTemporaryDir folder;

    static bool run(const QString& program, const QStringList& arguments,
                    QString* complaint = nullptr) {
        QProcess process;
        process.start(program, arguments);
        const bool ran = process.waitForFinished(30000);
        if (complaint)
            *complaint = QString::fromLocal8Bit(process.readAllStandardError());
        return ran && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }
};

// Makes and mounts the image with the label (and optionally the type and size), or
// skips the test where loop mounts of that type cannot be had.
#define LOOP_MOUNT_OR_SKIP(image, ...)                                                             \
    do {                                                                                           \
        if (const QString skip = (image).mount(__VA_ARGS__); !skip.isEmpty())                      \
            QSKIP(qPrintable(skip));                                                               \
        QVERIFY2(!(image).mountPoint.isEmpty(), "could not make and mount the image");             \
    } while (false)
