// SPDX-License-Identifier: GPL-2.0-or-later
// Opens a folder through the real size tree and its window (offscreen, shown) and
// reports how the interface keeps up while the folder is listed, measured and sorted,
// next to one "du -sk" of the same folder in the same run.
//   bench_open_window [--load] FOLDER
//   bench_open_window [--load] --files N | --folders N | --deep
// --files: N files in one folder; --folders: N subfolders of 5 files; --deep: a
// generated tree of about 350,000 entries. --load keeps a core busy meanwhile.
// BENCH_PRINT_CLOCK=1 prints
// the monotonic time of the open, to line the stall up with a profile taken with
// "perf record -k CLOCK_MONOTONIC".
#include "BusyCore.h"
#include "DuReference.h"
#include "GeneratedTree.h"
#include "core/SizeTree.h"
#include "platform/ChildProcess.h"
#include "platform/PathInfo.h"
#include "text/SizeText.h"
#include "views/TreeModel.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <memory>
#include <sys/resource.h>
#include <time.h>

namespace {

long peakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

qint64 threadCpuNs() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

long residentKiB() {
    QFile statm("/proc/self/statm");
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toLong() * (sysconf(_SC_PAGESIZE) / 1024) : 0;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    const bool load = args.removeAll("--load") > 0;
    QTemporaryDir scratch;
    const QByteArray base = QFile::encodeName(scratch.path());
    QByteArray folder;
    if (args.size() == 2 && args[0] == "--files")
        folder = generated::flatFolder(base, args[1].toInt());
    else if (args.size() == 2 && args[0] == "--folders")
        folder = generated::wideTree(base, args[1].toInt());
    else if (args.size() == 1 && args[0] == "--deep")
        folder = generated::deepTree(base);
    else if (args.size() == 1 && isExistingDirectory(QFile::encodeName(args[0])))
        folder = absolutePath(QFile::encodeName(args[0]));
    else {
        std::fprintf(stderr, "usage: bench_open_window [--load] FOLDER | --files N | "
                             "--folders N | --deep\n");
        return 2;
    }

    duDiskUsage(folder); // warm the inode cache for both timings
    QElapsedTimer clock;
    clock.start();
    const qint64 duBytes = duDiskUsage(folder);
    const double duMs = double(clock.nsecsElapsed()) / 1e6;

    SizeTree tree;
    MainWindow window(tree);
    window.show();
    for (int turn = 0; turn < 20; ++turn)
        app.processEvents();
    const long emptyWindowKiB = residentKiB();
    std::unique_ptr<BusyCore> busy;
    if (load)
        busy = std::make_unique<BusyCore>();

    // The longest gap between two turns of the event loop is the longest the
    // interface could not answer; the open call itself counts.
    // The main thread's own CPU time within the longest gap tells our work apart from
    // time the scheduler gave to other threads.
    QElapsedTimer sinceTick;
    qint64 longestStallNs = 0, longestStallCpuNs = 0, longestStallAtNs = 0;
    qint64 cpuAtTick = 0;
    QTimer heartbeat;
    heartbeat.setInterval(1);
    QObject::connect(&heartbeat, &QTimer::timeout, &app, [&] {
        const qint64 cpuNow = threadCpuNs();
        if (sinceTick.nsecsElapsed() > longestStallNs) {
            longestStallNs = sinceTick.nsecsElapsed();
            longestStallCpuNs = cpuNow - cpuAtTick;
            longestStallAtNs = clock.nsecsElapsed() - longestStallNs;
        }
        cpuAtTick = cpuNow;
        sinceTick.restart();
    });

    // The first level is in order once the outline has moved its rows after the total
    // came in.
    bool rootMeasured = false;
    QObject::connect(&tree, &SizeTree::rootMeasured, &app, [&] { rootMeasured = true; });
    bool levelSorted = false;
    QObject::connect(&window.model(), &QAbstractItemModel::layoutChanged, &app,
                     [&] { levelSorted = levelSorted || rootMeasured; });
    double firstRowsMs = -1, totalShownMs = -1, sortedMs = -1, openCallMs = -1;
    const auto rows = [&] { return window.model().rowCount(window.model().index(0, 0)); };
    QTimer probe;
    probe.setInterval(1);
    QObject::connect(&probe, &QTimer::timeout, &app, [&] {
        const double now = double(clock.nsecsElapsed()) / 1e6;
        if (firstRowsMs < 0 && rows() > 0)
            firstRowsMs = now;
        if (totalShownMs < 0 && window.statusLine().text().contains(QStringLiteral("Total")))
            totalShownMs = now;
        if (sortedMs < 0 && (levelSorted || (rootMeasured && rows() < 2)))
            sortedMs = now;
        if (totalShownMs >= 0 && sortedMs >= 0)
            app.quit();
    });

    clock.restart();
    sinceTick.start();
    cpuAtTick = threadCpuNs();
    heartbeat.start();
    probe.start();
    if (qEnvironmentVariableIsSet("BENCH_PRINT_CLOCK")) {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        std::printf("opened at monotonic     %ld.%09ld\n", long(now.tv_sec), now.tv_nsec);
    }
    window.openFolder(folder);
    openCallMs = double(clock.nsecsElapsed()) / 1e6;
    app.exec();
    // Painted once more with every row in, as a person would see it.
    window.repaint();
    const long shownKiB = residentKiB();
    busy.reset();

    const int entries = rows();
    std::printf("folder                  %s\n", folder.constData());
    if (load)
        std::printf("load                    one core kept busy\n");
    std::printf("first-level entries     %d\n", entries);
    std::printf("openPath call           %10.1f ms\n", openCallMs);
    std::printf("first rows shown        %10.1f ms\n", firstRowsMs);
    std::printf("first level sorted      %10.1f ms\n", sortedMs);
    std::printf("root total shown        %10.1f ms  (%s; du says %s)\n", totalShownMs,
                humanSize(tree.index()->allocated(tree.root())).toUtf8().constData(),
                humanSize(duBytes).toUtf8().constData());
    std::printf("longest main stall      %10.1f ms  (at %.0f ms; %.1f ms of it working)\n",
                double(longestStallNs) / 1e6, double(longestStallAtNs) / 1e6,
                double(longestStallCpuNs) / 1e6);
    std::printf("single du -sk           %10.1f ms\n", duMs);
    std::printf("ratio sorted/du         %10.2f\n", duMs > 0 ? sortedMs / duMs : 0.0);
    std::printf("memory above window     %10.1f MiB  (%.0f bytes per entry; peak %.1f MiB)\n",
                double(shownKiB - emptyWindowKiB) / 1024.0,
                entries > 0 ? double(shownKiB - emptyWindowKiB) * 1024.0 / entries : 0.0,
                double(peakMemoryKiB()) / 1024.0);
    if (tree.index()->allocated(tree.root()) != duBytes)
        std::printf("MISMATCH: the root's total differs from du -sk\n");
    // Hard links and deep chains are more than QTemporaryDir removes on its own.
    runForOutput("/bin/rm", {"-rf", "--", base});
    return 0;
}
