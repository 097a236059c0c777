// SPDX-License-Identifier: GPL-2.0-or-later
// Lists and measures one folder's first level through the real core (no window) and
// times it next to a single "du -sk" of the same folder, in the same run.
//   bench_first_level FOLDER
#include "core/SizeMeasure.h"
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
    void showNewRoot(const NodePtr& shown) override { root = shown; }
    bool isShown(const Node&) const override { return false; }
    void redrawRow(const NodePtr&) override {}
    void rowsAppended(const NodePtr&, size_t, size_t) override {}
    void redrawRowAndChildren(const NodePtr& node) override {
        if (node == root)
            QCoreApplication::quit();
    }
    void reorderChildren(const NodePtr&, const std::function<void()>& reorder) override {
        reorder();
    }
    void dropChildren(const NodePtr&) override {}

private:
    NodePtr root;
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
    folderDiskUsage(folder);
    QElapsedTimer clock;
    clock.start();
    const qint64 duBytes = folderDiskUsage(folder);
    const double duMs = clock.nsecsElapsed() / 1e6;

    SizeTree controller;
    SortedLevelClock display;
    controller.setDisplay(&display);
    clock.restart();
    controller.open(folder);
    const double listedMs = clock.nsecsElapsed() / 1e6;
    if (!controller.root()->children->empty())
        app.exec();
    const double sortedMs = clock.nsecsElapsed() / 1e6;

    qint64 sum = 0;
    for (const NodePtr& child : *controller.root()->children)
        sum += child->size();
    std::printf("folder            %s\n", folder.constData());
    std::printf("entries           %zu\n", controller.root()->children->size());
    std::printf("listing (main)    %10.1f ms\n", listedMs);
    std::printf("sorted level      %10.1f ms\n", sortedMs);
    std::printf("single du -sk     %10.1f ms  (%s)\n", duMs,
                humanSize(duBytes).toUtf8().constData());
    std::printf("ratio level/du    %10.2f\n", duMs > 0 ? sortedMs / duMs : 0.0);
    std::printf("sum of children   %s\n", humanSize(sum).toUtf8().constData());
    return 0;
}
