// SPDX-License-Identifier: GPL-2.0-or-later
// Lists and measures one folder's first level through the real core (no window) and
// times it next to a single "du -sk" of the same folder, in the same run.
//   bench_first_level FOLDER
#include "DuReference.h"
#include "core/SizeTree.h"
#include "core/TreeDisplay.h"
#include "platform/PathInfo.h"
#include "text/SizeText.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>

namespace {

class SortedLevelClock : public TreeDisplay {
public:
    void showNewRoot(const std::shared_ptr<const SizeIndex>&, EntryId shown) override {
        root = shown;
    }
    bool isShown(EntryId) const override { return false; }
    bool hasRows(EntryId folder) const override { return folder == root; }
    void rowsAppended(EntryId, size_t, size_t) override {}
    void redrawRow(EntryId) override {}
    void redrawRowAndChildren(EntryId) override {}
    void reorderChildren(EntryId folder, const std::vector<EntryId>&) override {
        if (folder == root)
            QCoreApplication::quit();
    }
    void dropChildren(EntryId) override {}
    void redrawAll() override {}

private:
    EntryId root = kNoEntry;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2 || !isExistingDirectory(argv[1])) {
        std::fprintf(stderr, "usage: bench_first_level FOLDER\n");
        return 2;
    }
    const QByteArray folder = absolutePath(argv[1]);

    // One untimed pass first, so both timings read a warm inode cache.
    duDiskUsage(folder);
    QElapsedTimer clock;
    clock.start();
    const qint64 duBytes = duDiskUsage(folder);
    const double duMs = clock.nsecsElapsed() / 1e6;

    SizeTree controller;
    SortedLevelClock display;
    controller.setDisplay(&display);
    clock.restart();
    controller.open(folder);
    const double listedMs = clock.nsecsElapsed() / 1e6;
    const auto& index = *controller.index();
    QObject::connect(&controller, &SizeTree::rootMeasured, &app, [&] {
        if (index.childCount(controller.root()) < 2)
            QCoreApplication::quit(); // nothing to put in order
    });
    app.exec();
    const double sortedMs = clock.nsecsElapsed() / 1e6;

    qint64 sum = 0;
    const auto& tree = *controller.index();
    for (EntryId child : tree.children(controller.root()))
        sum += tree.allocated(child);
    std::printf("folder            %s\n", folder.constData());
    std::printf("entries           %zu\n", tree.childCount(controller.root()));
    std::printf("open (main)    %10.1f ms\n", listedMs);
    std::printf("sorted level      %10.1f ms\n", sortedMs);
    std::printf("single du -sk     %10.1f ms  (%s)\n", duMs,
                humanSize(duBytes).toUtf8().constData());
    std::printf("ratio level/du    %10.2f\n", duMs > 0 ? sortedMs / duMs : 0.0);
    std::printf("sum of children   %s\n", humanSize(sum).toUtf8().constData());
    return 0;
}
