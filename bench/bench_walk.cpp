// SPDX-License-Identifier: GPL-2.0-or-later
// Times the walk into the index on generated folders (or on given ones), next to one
// "du -sk" and a bare two-thread C walk of the same folder, in the same run, after one
// warm-up pass, and prints what the index holds per entry:
//   bench_walk [--runs N] [--workers N] [--load] [--engine-only] [--no-warmup] [FOLDER...]
//   bench_walk --generate DIR
// Without FOLDER it generates, in a temporary folder: 2,000 and 20,000 subfolders of 5
// files, a deep tree of about 350,000 entries and a flat folder of 100,000 files
// (--generate makes them in DIR and keeps them). --load keeps one core busy with
// another process while timing.
#include "BusyCore.h"
#include "GeneratedTree.h"
#include "core/IndexWalk.h"
#include "core/WalkEngine.h"
#include "platform/ChildProcess.h"
#include "platform/PathInfo.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThreadPool>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Times one walk: to the last child of the folder measured (the first level complete)
// and to the folder's total.
class WalkClock : public WalkListener {
public:
    WalkClock(const SizeIndex& index) : index(index), start(Clock::now()) {}
    void listed(EntryId) override {}
    void measured(EntryId folder) override {
        if (folder != index.root() && index.parent(folder) == index.root())
            levelMs = msSince(start);
    }
    void ended() override {
        std::lock_guard guard(lock);
        totalMs = msSince(start);
        done = true;
        endedNow.notify_all();
    }
    void wait() {
        std::unique_lock guard(lock);
        endedNow.wait(guard, [this] { return done; });
    }

    const SizeIndex& index;
    const Clock::time_point start;
    std::mutex lock;
    std::condition_variable endedNow;
    bool done = false;
    double levelMs = 0, totalMs = 0;
};

struct WalkTimes {
    double level = 0, total = 0;
    qint64 bytes = 0;
    size_t entries = 0;
    double bytesPerEntry = 0;
};

WalkTimes timeWalk(WalkEngine& engine, const QByteArray& folder) {
    auto index = std::make_shared<SizeIndex>(folder);
    auto clock = std::make_shared<WalkClock>(*index);
    auto walk = engine.walk(index, index->root(), folder, {}, clock);
    clock->wait();
    const size_t entries = index->size();
    return {std::max(clock->levelMs, 0.0), clock->totalMs, index->allocated(index->root()), entries,
            entries ? double(index->memoryUsed()) / double(entries) : 0.0};
}

double timeProgram(const QByteArray& program, const QList<QByteArray>& args) {
    const Clock::time_point start = Clock::now();
    runForOutput(program, args);
    return msSince(start);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The reference C walk, built from its source beside the project into this program's
// folder; it is not part of the project.
QByteArray buildFloorwalk() {
    const QByteArray binary =
        QFile::encodeName(QCoreApplication::applicationDirPath()) + "/floorwalk";
    const QByteArray source = SIZELOOM_SOURCE_DIR "/../shared/bench/floorwalk.c";
    if (!QFileInfo::exists(QFile::decodeName(source))) {
        std::fprintf(stderr, "no %s: the floorwalk column stays empty\n", source.constData());
        return {};
    }
    runForOutput("/usr/bin/gcc", {"-O2", "-pthread", "-o", binary, source});
    return QFileInfo(QFile::decodeName(binary)).isExecutable() ? binary : QByteArray();
}

// Another process keeping one core busy, until destroyed.
struct Options {
    int runs = 3;
    int workers = WalkEngine::defaultWorkers();
    bool load = false, engineOnly = false, warmUp = true;
    QList<QByteArray> folders;
    QByteArray generateIn;
};

QList<QByteArray> generateTrees(const QByteArray& base) {
    std::printf("generating trees in %s ...\n", base.constData());
    std::fflush(stdout);
    return {generated::wideTree(base, 2000), generated::wideTree(base, 20000),
            generated::deepTree(base), generated::flatFolder(base, 100000)};
}

void benchFolder(const QByteArray& folder, const Options& options, QThreadPool* pool,
                 const QByteArray& floorwalk) {
    WalkEngine engine(pool, options.workers);
    const QList<QByteArray> duArgs{"-sk", "--", folder};
    const QList<QByteArray> floorArgs{"-t", "2", "-q", folder};
    if (options.warmUp) {
        timeProgram("/usr/bin/du", duArgs);
        timeWalk(engine, folder);
        if (!floorwalk.isEmpty())
            timeProgram(floorwalk, floorArgs);
    }
    std::vector<double> level, total, du, floor;
    WalkTimes walk;
    for (int run = 0; run < options.runs; ++run) {
        walk = timeWalk(engine, folder);
        level.push_back(walk.level);
        total.push_back(walk.total);
        if (options.engineOnly)
            continue;
        du.push_back(timeProgram("/usr/bin/du", duArgs));
        if (!floorwalk.isEmpty())
            floor.push_back(timeProgram(floorwalk, floorArgs));
    }
    std::printf("\n%s  (%zu entries, %.1f MiB, %d workers%s, median of %d)\n", folder.constData(),
                walk.entries, walk.bytes / 1048576.0, options.workers,
                options.load ? ", one core busy" : "", options.runs);
    std::printf("  index walk: first level %9.1f ms   total %9.1f ms   %.1f B per entry\n",
                median(level), median(total), walk.bytesPerEntry);
    if (options.engineOnly)
        return;
    const double duMs = median(du);
    std::printf("  du -sk:                          %9.1f ms\n", duMs);
    std::printf("  ratios: first level / du -sk %.2f   total / du -sk %.2f", median(level) / duMs,
                median(total) / duMs);
    if (!floor.empty()) {
        const double floorMs = median(floor);
        std::printf("\n  floorwalk -t 2:                  %9.1f ms\n", floorMs);
        std::printf("  ratios: first level / floorwalk %.2f   total / floorwalk %.2f",
                    median(level) / floorMs, median(total) / floorMs);
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    Options options;
    const QStringList args = app.arguments().mid(1);
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (args[i] == "--runs" && i + 1 < args.size())
            options.runs = std::max(1, args[++i].toInt());
        else if (args[i] == "--workers" && i + 1 < args.size())
            options.workers = std::clamp(args[++i].toInt(), 1, 6);
        else if (args[i] == "--load")
            options.load = true;
        else if (args[i] == "--engine-only")
            options.engineOnly = true;
        else if (args[i] == "--no-warmup")
            options.warmUp = false;
        else if (args[i] == "--generate" && i + 1 < args.size())
            options.generateIn = QFile::encodeName(args[++i]);
        else if (!args[i].startsWith("--") && isExistingDirectory(QFile::encodeName(args[i])))
            options.folders << absolutePath(QFile::encodeName(args[i]));
        else {
            std::fprintf(stderr, "usage: bench_walk [--runs N] [--workers N] [--load] "
                                 "[--engine-only] [--no-warmup] [FOLDER...]\n"
                                 "       bench_walk --generate DIR\n");
            return 2;
        }
    }
    if (!options.generateIn.isEmpty()) {
        generateTrees(options.generateIn);
        return 0;
    }

    QTemporaryDir scratch;
    if (options.folders.isEmpty())
        options.folders = generateTrees(QFile::encodeName(scratch.path()));
    const QByteArray floorwalk = options.engineOnly ? QByteArray() : buildFloorwalk();
    QThreadPool pool;
    pool.setMaxThreadCount(6);
    std::unique_ptr<BusyCore> busy;
    if (options.load)
        busy = std::make_unique<BusyCore>();
    for (const QByteArray& folder : options.folders)
        benchFolder(folder, options, &pool, floorwalk);
    busy.reset();
    // Hard links and deep chains are more than QTemporaryDir removes on its own.
    runForOutput("/bin/rm", {"-rf", "--", QFile::encodeName(scratch.path())});
    return 0;
}
