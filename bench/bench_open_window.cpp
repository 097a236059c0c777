// Opens a folder through the real controller and window (offscreen) and reports how
// the interface keeps up while the first level streams in, next to one "du -sk" of
// the same folder in the same run.
//   bench_open_window FOLDER
//   bench_open_window --files N     (a generated folder of N empty-ish files)
//   bench_open_window --folders N   (a generated folder of N subfolders, 5 files each)
#include "app/AppController.h"
#include "core/PathInfo.h"
#include "core/SizeMeasure.h"
#include "platform/ChildProcess.h"
#include "text/SizeText.h"
#include "ui/TreeModel.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void touch(const QByteArray& path, int bytes) {
    const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return;
    const QByteArray data(bytes, 'x');
    if (bytes > 0 && write(fd, data.constData(), size_t(bytes)) != bytes)
        std::perror("write");
    close(fd);
}

QByteArray generate(const QByteArray& base, const QByteArray& kind, int count) {
    const QByteArray folder = base + "/" + kind + QByteArray::number(count);
    mkdir(folder.constData(), 0755);
    for (int i = 0; i < count; ++i) {
        const QByteArray item = folder + "/item" + QByteArray::number(i);
        if (kind == "files") {
            touch(item, (i * 7919) % 9000);
        } else {
            mkdir(item.constData(), 0755);
            for (int j = 0; j < 5; ++j)
                touch(item + "/f" + QByteArray::number(j), ((i + j) * 104729) % 20000);
        }
    }
    return folder;
}

long peakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir scratch;
    QByteArray folder;
    if (argc == 3 && (QByteArray(argv[1]) == "--files" || QByteArray(argv[1]) == "--folders"))
        folder = generate(QFile::encodeName(scratch.path()), QByteArray(argv[1]).mid(2),
                          QByteArray(argv[2]).toInt());
    else if (argc == 2 && isExistingDirectory(argv[1]))
        folder = absolutePath(argv[1]);
    else {
        std::fprintf(stderr, "usage: bench_open_window FOLDER | --files N | --folders N\n");
        return 2;
    }

    folderDiskUsage(folder); // warm the inode cache for both timings
    QElapsedTimer clock;
    clock.start();
    folderDiskUsage(folder);
    const double duMs = clock.nsecsElapsed() / 1e6;
    const long memoryBefore = peakMemoryKiB();

    AppController controller;
    controller.buildWindow();

    // The longest gap between two turns of the event loop is the longest the
    // interface could not answer.
    QElapsedTimer sinceTick;
    qint64 longestStallNs = 0;
    QTimer heartbeat;
    heartbeat.setInterval(1);
    QObject::connect(&heartbeat, &QTimer::timeout, &app, [&] {
        longestStallNs = std::max(longestStallNs, sinceTick.nsecsElapsed());
        sinceTick.restart();
    });

    double totalShownMs = -1, sortedMs = -1, openCallMs = -1;
    QTimer probe;
    probe.setInterval(1);
    QObject::connect(&probe, &QTimer::timeout, &app, [&] {
        const double now = clock.nsecsElapsed() / 1e6;
        if (totalShownMs < 0 && controller.status->text().contains(QStringLiteral("Total")))
            totalShownMs = now;
        if (sortedMs < 0 && controller.rootNode->pending == 0)
            sortedMs = now;
        if (totalShownMs >= 0 && sortedMs >= 0)
            app.quit();
    });

    clock.restart();
    controller.openPath(folder);
    openCallMs = clock.nsecsElapsed() / 1e6;
    sinceTick.start();
    heartbeat.start();
    probe.start();
    app.exec();

    std::printf("folder                  %s\n", folder.constData());
    std::printf("first-level entries     %d\n",
                controller.model->rowCount(controller.model->index(0, 0)));
    std::printf("open + listing (main)   %10.1f ms\n", openCallMs);
    std::printf("root total shown        %10.1f ms\n", totalShownMs);
    std::printf("first level sorted      %10.1f ms\n", sortedMs);
    std::printf("longest main stall      %10.1f ms (after the listing)\n", longestStallNs / 1e6);
    std::printf("single du -sk           %10.1f ms  (%s)\n", duMs,
                humanSize(folderDiskUsage(folder)).toUtf8().constData());
    std::printf("ratio sorted/du         %10.2f\n", duMs > 0 ? sortedMs / duMs : 0.0);
    std::printf("peak memory             %10.1f MiB (%.1f MiB before the window)\n",
                peakMemoryKiB() / 1024.0, memoryBefore / 1024.0);
    return 0;
}
