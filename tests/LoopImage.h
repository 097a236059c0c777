#pragma once

// A small ext4 image, made and loop-mounted by the real tools, for tests that watch
// volumes come and go. Only root may mount; elsewhere the test is skipped.
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

    // Makes the image with the label and mounts it. Returns why a loop mount cannot be
    // had here (not root, no loop devices, refused for want of permission), if so.
    QString mount(const QString& label, bool* mounted) {
        *mounted = false;
        if (geteuid() != 0)
            return QStringLiteral("loop-mounting an image needs root");
        if (!QFile::exists(QStringLiteral("/dev/loop-control")))
            return QStringLiteral("no loop devices here (/dev/loop-control is missing)");
        const QString image = folder.filePath(QStringLiteral("volume.img"));
        const QString target = folder.filePath(QStringLiteral("mnt"));
        const QString mkfs = QStandardPaths::findExecutable("mkfs.ext4", {"/usr/sbin", "/sbin"});
        QString complaint;
        if (!folder.isValid() || !QDir().mkpath(target) || !run("truncate", {"-s", "8M", image}) ||
            !run(mkfs, {"-q", "-L", label, image}) ||
            !run("mount", {"-o", "loop", image, target}, &complaint)) {
            for (const char* refusal :
                 {"ermission denied", "not permitted", "failed to setup loop"})
                if (complaint.contains(QLatin1String(refusal)))
                    return QStringLiteral("loop mount refused: ") + complaint.trimmed();
            return {};
        }
        mountPoint = QFile::encodeName(target);
        *mounted = true;
        return {};
    }

    bool unmount() {
        if (mountPoint.isEmpty() || run("umount", {QFile::decodeName(mountPoint)}))
            mountPoint.clear();
        return mountPoint.isEmpty();
    }

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

// Makes and mounts the image with the label, or skips the test where loop mounts
// cannot be had.
#define LOOP_MOUNT_OR_SKIP(image, label)                                                           \
    do {                                                                                           \
        bool mounted = false;                                                                      \
        if (const QString skip = (image).mount(label, &mounted); !skip.isEmpty())                  \
            QSKIP(qPrintable(skip));                                                               \
        QVERIFY2(mounted, "could not make and mount the image");                                   \
    } while (false)
