// SPDX-License-Identifier: GPL-2.0-or-later
// What the index costs and what it buys, through the real size tree and its window
// (offscreen, shown):
// - memory: bytes per entry of the index, and the process's growth above the empty
//   window per entry, on the generated deep tree and on one folder of 1,000,000 files,
//   next to the peak memory per entry of ncdu and gdu scanning the same folder;
// - drill-down: on a tree of about 1,000,000 entries concentrated down one path, the
//   time from opening each folder along that path (five levels) to its rows being
//   shown sized and in order, and the folders read meanwhile, next to a new walk of
//   the first of them.
//   bench_index [--skip-memory] [--skip-drill] [--in DIR]
// --in DIR generates the trees in DIR (kept; generated once, reused after).
#include "GeneratedTree.h"
#include "core/LevelOrder.h"
#include "core/SizeTree.h"
#include "platform/ChildProcess.h"
#include "platform/DirectoryReader.h"
#include "platform/PathInfo.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QTemporaryDir>
#include <cstdio>
#include <malloc.h>
#include <optional>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

long residentKiB() {
    QFile statm("/proc/self/statm");
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toLong() * (sysconf(_SC_PAGESIZE) / 1024) : 0;
}

// The peak resident memory of a program run to its end, in KiB; none when it cannot run.
std::optional<long> peakOfProgram(const QByteArray& program, const QList<QByteArray>& args) {
    if (!QFileInfo(QFile::decodeName(program)).isExecutable())
        return std::nullopt;
    std::vector<QByteArray> owned{program};
    for (const QByteArray& arg : args)
        owned.push_back(arg);
    std::vector<char*> argv;
    for (QByteArray& arg : owned)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int spawned =
        posix_spawn(&pid, program.constData(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return std::nullopt;
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return usage.ru_maxrss;
}

// Runs the event loop until the condition holds; false after a minute.
template <typename Condition> bool waitFor(Condition condition) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > 60000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

struct Window {
    SizeTree tree;
    MainWindow window{tree};
    Window() {
        window.resize(1000, 700);
        window.show();
        for (int turn = 0; turn < 20; ++turn)
            QCoreApplication::processEvents();
    }
    TreeModel& model() { return window.model(); }
    // The folder's rows are in the outline (in whatever order): all of them, or the
    // first page of a large level.
    bool rowsIn(EntryId folder) {
        const QModelIndex at = model().indexOf(folder);
        return at.isValid() && model().hasRows(folder) &&
               model().rowCount(at) ==
                   int(std::min(tree.index()->childCount(folder), TreeModel::kRowsPerPage));
    }
    bool inOrder(EntryId folder) {
        const QModelIndex at = model().indexOf(folder);
        const std::vector<EntryId> order = largestFirst(*tree.index(), folder);
        for (int row = 0; row < model().rowCount(at); ++row)
            if (model().entryAt(model().index(row, 0, at)) != order[size_t(row)])
                return false;
        return rowsIn(folder);
    }
    bool settled() {
        return waitFor([&] {
            return tree.index() && tree.index()->isMeasured(tree.root()) && !tree.isWalking() &&
                   inOrder(tree.root()) &&
                   window.statusLine().text().contains(QStringLiteral("Total"));
        });
    }
};

void memoryOf(const QByteArray& folder, const char* what) {
    Window shown;
    const long before = residentKiB();
    shown.window.openFolder(folder);
    if (!shown.settled()) {
        std::printf("%s: did not settle\n", what);
        return;
    }
    // A moment for what comes after the sort (the memory freed meanwhile is given back).
    QElapsedTimer moment;
    moment.start();
    waitFor([&] { return moment.elapsed() > 300; });
    const long after = residentKiB();
    // What the allocator keeps of memory freed meanwhile, given back.
    malloc_trim(0);
    const long live = residentKiB();
    const SizeIndex& index = *shown.tree.index();
    const double entries = double(index.size());
    std::printf("\n%s  %s  (%.0f entries)\n", what, folder.constData(), entries);
    std::printf("  index                     %6.1f B per entry\n",
                double(index.memoryUsed()) / entries);
    std::printf("  process above the window  %6.1f B per entry  (target at most 64)\n",
                double(after - before) * 1024.0 / entries);
    std::printf("  the same, all freed memory given back  %6.1f B per entry\n",
                double(live - before) * 1024.0 / entries);
    if (const auto ncdu = peakOfProgram("/usr/bin/ncdu", {"-0", "-o", "/dev/null", folder}))
        std::printf("  ncdu -o, peak             %6.1f B per entry\n",
                    double(*ncdu) * 1024.0 / entries);
    if (const auto gdu = peakOfProgram("/usr/bin/gdu", {"-n", "-p", folder}))
        std::printf("  gdu -n, peak              %6.1f B per entry\n",
                    double(*gdu) * 1024.0 / entries);
    std::fflush(stdout);
}

void drillDown(const QByteArray& top, int levels) {
    Window shown;
    shown.window.openFolder(top);
    QElapsedTimer clock;
    clock.start();
    if (!shown.settled()) {
        std::printf("drill-down: did not settle\n");
        return;
    }
    const double walkMs = double(clock.nsecsElapsed()) / 1e6;
    const SizeIndex& index = *shown.tree.index();
    std::printf("\ndrill-down  %s  (%zu entries; walked and shown in %.0f ms)\n", top.constData(),
                index.size(), walkMs);

    EntryId folder = shown.tree.root();
    QByteArray firstPath;
    for (int level = 1; level <= levels; ++level) {
        // The largest child, as a person drilling down picks it.
        const std::vector<EntryId> order = largestFirst(index, folder);
        if (order.empty() || !index.isFolder(order.front()))
            break;
        const EntryId next = order.front();
        const QModelIndex row = shown.model().indexOf(next);
        const quint64 readsBefore = DirectoryReader::foldersRead();
        clock.restart();
        shown.window.outline().expand(row);
        waitFor([&] { return shown.rowsIn(next); });
        // Painted, as the person sees it.
        shown.window.outline().viewport()->repaint();
        const double shownMs = double(clock.nsecsElapsed()) / 1e6;
        const bool sorted = shown.inOrder(next);
        std::printf("  level %d  %-10s %6zu rows  shown %6.1f ms  %s  folders read %llu\n", level,
                    index.name(next).constData(), index.childCount(next), shownMs,
                    sorted ? "sorted" : "NOT SORTED",
                    static_cast<unsigned long long>(DirectoryReader::foldersRead() - readsBefore));
        if (level == 1)
            firstPath = index.pathOf(next);
        folder = next;
    }

    // The same folders opened as the top of the window (typed, or the up button back),
    // shown from the same index.
    std::vector<QByteArray> path;
    for (EntryId at = folder; at != shown.tree.root(); at = index.parent(at))
        path.insert(path.begin(), index.pathOf(at));
    const auto indexUsed = shown.tree.index();
    for (size_t level = 0; level < path.size(); ++level) {
        const quint64 readsBefore = DirectoryReader::foldersRead();
        clock.restart();
        shown.window.openFolder(path[level]);
        waitFor([&] { return shown.rowsIn(shown.tree.root()); });
        shown.window.outline().viewport()->repaint();
        const double shownMs = double(clock.nsecsElapsed()) / 1e6;
        std::printf("  opened as the top, level %zu  shown %6.1f ms  %s%s  folders read %llu\n",
                    level + 1, shownMs, shown.inOrder(shown.tree.root()) ? "sorted" : "NOT SORTED",
                    shown.tree.index() == indexUsed ? "" : ", NEW INDEX",
                    static_cast<unsigned long long>(DirectoryReader::foldersRead() - readsBefore));
    }

    // The reference: the first of them walked anew, as it would be without the index.
    Window fresh;
    clock.restart();
    fresh.window.openFolder(firstPath + "/");
    fresh.settled();
    std::printf("  reference: a new walk of level 1 shown in %.0f ms\n",
                double(clock.nsecsElapsed()) / 1e6);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    const bool memory = args.removeAll("--skip-memory") == 0;
    const bool drill = args.removeAll("--skip-drill") == 0;
    QByteArray base;
    QTemporaryDir scratch;
    if (args.size() == 2 && args[0] == "--in") {
        base = absolutePath(QFile::encodeName(args[1]));
    } else if (args.isEmpty()) {
        base = QFile::encodeName(scratch.path());
    } else {
        std::fprintf(stderr, "usage: bench_index [--skip-memory] [--skip-drill] [--in DIR]\n");
        return 2;
    }
    const auto made = [&](const QByteArray& name, auto make) {
        if (isExistingDirectory(base + "/" + name))
            return base + "/" + name;
        std::printf("generating %s in %s ...\n", name.constData(), base.constData());
        std::fflush(stdout);
        return make();
    };
    if (memory) {
        memoryOf(made("deep350000", [&] { return generated::deepTree(base); }), "deep tree");
        memoryOf(
            made("flatempty1000000", [&] { return generated::flatEmptyFolder(base, 1000000); }),
            "flat folder");
    }
    if (drill)
        drillDown(made("concentrated", [&] { return generated::concentratedTree(base); }), 5);
    if (!scratch.path().isEmpty() && base == QFile::encodeName(scratch.path()))
        runForOutput("/bin/rm", {"-rf", "--", base});
    return 0;
}
