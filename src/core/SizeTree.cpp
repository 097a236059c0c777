// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/SizeTree.h"

#include "core/TreeDisplay.h"
#include "core/WalkEngine.h"
#include "platform/BackgroundJob.h"
#include "platform/FreedMemory.h"

#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <sys/stat.h>
#include <unordered_set>

// Takes one walk's results from its workers to the tree on the main thread. What
// arrives once the walk is no longer the folder's (stopped, replaced, the tree gone) is
// dropped there.
class SizeTree::Listener : public WalkListener {
public:
    Listener(std::shared_ptr<MainThreadInbox> inbox, QPointer<SizeTree> tree, EntryId folder,
             std::shared_ptr<const int> tag)
        : inbox(std::move(inbox)), tree(std::move(tree)), folder(folder), tag(std::move(tag)) {}

    void listed(EntryId listedFolder) override {
        handOver([listedFolder, walked = folder](SizeTree& to, const Tag& from) {
            to.applyListed(walked, listedFolder, from);
        });
    }
    void measured(EntryId measuredFolder) override {
        handOver([measuredFolder, walked = folder](SizeTree& to, const Tag& from) {
            to.applyMeasured(walked, measuredFolder, from);
        });
    }
    void ended() override {
        handOver([walked = folder](SizeTree& to, const Tag& from) { to.applyEnded(walked, from); });
    }

private:
    template <typename Apply> void handOver(Apply apply) {
        inbox->post([tree = tree, tag = tag, apply = std::move(apply)] {
            if (tree)
                apply(*tree, tag);
        });
    }
    const std::shared_ptr<MainThreadInbox> inbox;
    const QPointer<SizeTree> tree;
    const EntryId folder;
    // Tells this walk's results from those of a walk of the same folder before it.
    const Tag tag;
};

namespace {

bool isBelowOrAt(const SizeIndex& index, EntryId id, EntryId folder) {
    for (EntryId at = id; at != kNoEntry; at = at == index.root() ? kNoEntry : index.parent(at))
        if (at == folder)
            return true;
    return false;
}

qint64 modifiedNs(const QByteArray& path) {
    struct stat st {};
    if (stat(path.constData(), &st) != 0)
        return -1;
    return qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

} // namespace

SizeTree::SizeTree(QObject* parent)
    : IndexSource(parent), sizeQueue(new QThreadPool), inbox(MainThreadInbox::make()) {
    sizeQueue->setMaxThreadCount(6);
    engine = std::make_unique<WalkEngine>(sizeQueue);
    inbox->displayWorkDue = [this] { return rowsDueForAnnouncement(); };
    inbox->displayWork = [this] { showDueRows(); };
}

SizeTree::~SizeTree() {
    const QDeadlineTimer quitBy = quitDeadline.value_or(QDeadlineTimer(2000));
    inbox->displayWorkDue = nullptr;
    inbox->displayWork = nullptr;
    dropWalks();
    engine->setQuitDeadline(quitBy);
    engine.reset();
    sizeQueue->clear();
    // Should a worker still be caught in the file system (a mount that does not
    // answer), the pool is left to finish on its own rather than hang the quit.
    if (sizeQueue->waitForDone(int(quitBy.remainingTime())))
        delete sizeQueue;
}

void SizeTree::setQuitDeadline(QDeadlineTimer deadline) {
    quitDeadline = deadline;
}

void SizeTree::setDisplay(TreeDisplay* shower) {
    display = shower;
}

int SizeTree::busyWorkers() const {
    return engine->busyWorkers();
}

QByteArray SizeTree::rootPath() const {
    return tree ? tree->pathOf(top) : QByteArray();
}

ItemRef SizeTree::itemAt(EntryId id) const {
    return itemRefOf(tree, top, id);
}

bool SizeTree::isWalkingRoot() const {
    const auto running = walks.constFind(top);
    return running != walks.cend() && !running->splice;
}

bool SizeTree::isWalking() const {
    return !walks.isEmpty();
}

EntryId SizeTree::findBelow(EntryId folder, const QByteArray& relative) const {
    EntryId at = folder;
    for (const QByteArray& part : relative.split('/')) {
        if (part.isEmpty())
            continue;
        EntryId found = kNoEntry;
        for (const EntryId child : tree->children(at))
            if (tree->isFolder(child) && tree->name(child) == part) {
                found = child;
                break;
            }
        if (found == kNoEntry)
            return kNoEntry;
        at = found;
    }
    return at;
}

void SizeTree::open(const QByteArray& path) {
    // A folder inside the index, walked to the end: shown from what the index holds.
    if (tree && walks.isEmpty() && !stopped && (tree->state(tree->root()) & Measured) &&
        path != rootPath()) {
        const QByteArray base = tree->rootPath();
        const QByteArray prefix = base.endsWith('/') ? base : base + '/';
        const EntryId inside = path == base ? tree->root()
                               : path.startsWith(prefix)
                                   ? findBelow(tree->root(), path.mid(prefix.size()))
                                   : kNoEntry;
        if (inside != kNoEntry) {
            top = inside;
            announced.clear();
            unannounced.clear();
            if (display)
                display->showNewRoot(tree, top);
            Q_EMIT rootOpened();
            Q_EMIT rootMeasured();
            return;
        }
    }
    dropWalks();
    tree = std::make_shared<SizeIndex>(path);
    top = tree->root();
    announced.clear();
    unannounced.clear();
    stopped = false;
    completedAt = {};
    if (display)
        display->showNewRoot(tree, top);
    Q_EMIT rootOpened();
    // The walk starts once the turn that opened the folder is over, and the outline has
    // taken in the change: its workers would otherwise take the cores from that turn.
    // A millisecond later, since with no delay Qt may run it in the same pass.
    QTimer::singleShot(1, this, [this, opened = tree] {
        if (tree == opened && walks.isEmpty())
            startWalk(top);
    });
}

void SizeTree::refresh() {
    if (tree)
        open(rootPath());
}

void SizeTree::startWalk(EntryId folder, const std::optional<Walk>& overtaken) {
    Walk started;
    started.splice = folder != tree->root() || tree->size() > 1;
    if (started.splice) {
        started.oldBlocks = overtaken ? overtaken->oldBlocks : tree->blocksOf(folder);
        started.oldApparent = overtaken ? overtaken->oldApparent : tree->apparent(folder);
        started.oldItems = overtaken ? overtaken->oldItems : tree->itemsBelow(folder);
        started.oldUnreadable =
            overtaken ? overtaken->oldUnreadable : tree->unreadableBelow(folder);
        if (display)
            display->dropChildren(folder);
        for (auto shown = announced.begin(); shown != announced.end();)
            shown = isBelowOrAt(*tree, shown.key(), folder) ? announced.erase(shown) : ++shown;
        std::erase_if(unannounced, [&](const Unannounced& run) {
            return isBelowOrAt(*tree, run.folder, folder);
        });
        tree->restart(folder);
    }
    started.tag = std::make_shared<const int>(0);
    started.walk = engine->walk(tree, folder, tree->pathOf(folder), options,
                                std::make_shared<Listener>(inbox, this, folder, started.tag));
    const bool first = walks.isEmpty();
    walks.insert(folder, started);
    if (first)
        Q_EMIT walkingChanged(true);
}

bool SizeTree::isCurrent(EntryId walked, const Tag& tag) const {
    const auto running = walks.constFind(walked);
    return running != walks.cend() && running->tag == tag;
}

void SizeTree::applyListed(EntryId walked, EntryId folder, const Tag& tag) {
    if (isCurrent(walked, tag))
        noteListed(folder);
}

void SizeTree::applyMeasured(EntryId walked, EntryId folder, const Tag& tag) {
    if (!isCurrent(walked, tag))
        return;
    if (display)
        display->redrawRow(folder);
    sortWhenMeasured(folder);
}

void SizeTree::applyEnded(EntryId folder, const Tag& tag) {
    if (!isCurrent(folder, tag))
        return;
    const Walk done = walks.take(folder);
    if (done.splice) {
        // The folder's ancestors move by what its new walk found different.
        const qint64 blocks = tree->blocksOf(folder) - done.oldBlocks;
        const qint64 apparent = tree->apparent(folder) - done.oldApparent;
        const qint64 items = qint64(tree->itemsBelow(folder)) - done.oldItems;
        const qint64 unreadable = qint64(tree->unreadableBelow(folder)) - done.oldUnreadable;
        const quint32 newest = tree->modified(folder);
        for (EntryId above = tree->parent(folder); above != kNoEntry;
             above = above == tree->root() ? kNoEntry : tree->parent(above)) {
            tree->adjustTotals(above, blocks, apparent, items, unreadable, newest);
            if (display)
                display->redrawRowAndChildren(above);
            // Its level may no longer be in order.
            sortWhenMeasured(above);
        }
    } else {
        completedAt = QDateTime::currentDateTime();
        Q_EMIT rootMeasured();
        giveBackFreedMemory();
    }
    Q_EMIT subtreeChanged(folder);
    for (const EntryId waiting : std::exchange(pendingRefresh, {}))
        refreshFolder(waiting);
    if (walks.isEmpty())
        Q_EMIT walkingChanged(false);
}

void SizeTree::dropWalks() {
    for (const Walk& running : std::as_const(walks))
        running.walk->cancel();
    walks.clear();
    pendingRefresh.clear();
}

void SizeTree::stop() {
    if (walks.isEmpty())
        return;
    const QList<EntryId> walked = walks.keys();
    dropWalks();
    pendingRefresh.clear();
    for (const EntryId folder : walked) {
        markPartial(folder);
        // Its ancestors' totals still hold what it had before: not final either.
        for (EntryId above = folder; above != tree->root();) {
            above = tree->parent(above);
            tree->addState(above, Partial);
        }
    }
    stopped = true;
    if (display)
        display->redrawAll();
    // Stopped levels are put in order with what was found.
    for (auto shown = announced.cbegin(); shown != announced.cend(); ++shown)
        sortWhenMeasured(shown.key());
    Q_EMIT rootMeasured();
    for (const EntryId folder : walked)
        Q_EMIT subtreeChanged(folder);
    Q_EMIT walkingChanged(false);
}

quint64 SizeTree::itemsWalked() const {
    const auto running = walks.constFind(top);
    if (running != walks.cend())
        return running->walk->progress().items.load(std::memory_order_relaxed);
    return tree ? tree->itemsBelow(top) : 0;
}

qint64 SizeTree::bytesFound() const {
    const auto running = walks.constFind(top);
    if (running != walks.cend())
        return running->walk->progress().blocks.load(std::memory_order_relaxed) * 512;
    return tree ? tree->allocated(top) : 0;
}

void SizeTree::markPartial(EntryId folder) {
    // Bottom up through the folders not measured; each hard-linked file counted at its
    // first link only, so that every figure stays at most the true total.
    struct Frame {
        EntryId id;
        std::vector<EntryId> children;
        size_t next = 0;
        qint64 blocks = 0, apparent = 0;
        quint32 items = 0, unreadable = 0, newest = 0;
    };
    // A folder that could not be read counts in its ancestors' figure, as in a walk's.
    const auto cannotRead = [this](EntryId id) {
        return (tree->state(id) & (Unreadable | PartlyUnreadable)) ? 1u : 0u;
    };
    std::unordered_set<quint64> linked;
    std::vector<Frame> frames;
    frames.push_back({folder, tree->children(folder)});
    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next < frame.children.size()) {
            const EntryId child = frame.children[frame.next++];
            ++frame.items;
            frame.newest = std::max(frame.newest, tree->modified(child));
            if (!tree->isFolder(child)) {
                if (tree->isHardLinked(child) && !linked.insert(tree->listedIno(child)).second)
                    continue;
                frame.blocks += tree->allocated(child) / 512;
                frame.apparent += tree->apparent(child);
            } else if (tree->isMeasured(child)) {
                frame.blocks += tree->blocksOf(child);
                frame.apparent += tree->apparent(child);
                frame.items += tree->itemsBelow(child);
                frame.unreadable += tree->unreadableBelow(child) + cannotRead(child);
            } else {
                frames.push_back({child, tree->children(child)});
            }
            continue;
        }
        const Frame done = std::move(frames.back());
        frames.pop_back();
        tree->setTotals(done.id, done.blocks, done.apparent, done.items, done.unreadable,
                        done.newest);
        tree->addState(done.id, Partial);
        if (!frames.empty()) {
            Frame& above = frames.back();
            above.blocks += done.blocks;
            above.apparent += done.apparent;
            above.items += done.items;
            above.unreadable += done.unreadable + cannotRead(done.id);
            above.newest = std::max(above.newest, done.newest);
        }
    }
}

void SizeTree::rowsShown(EntryId folder, size_t count) {
    if (!tree)
        return;
    announced.insert(folder, count);
    // Shown from the index: should the folder's own listing have changed since its walk
    // (one look at it, off the main thread), it is walked again.
    if (!(tree->state(folder) & Measured) || walks.contains(folder))
        return;
    for (const EntryId walked : walks.keys())
        if (isBelowOrAt(*tree, folder, walked))
            return;
    runInBackground<qint64>(
        this, [path = tree->pathOf(folder)] { return modifiedNs(path); },
        [this, index = std::weak_ptr<SizeIndex>(tree), folder,
         walkedAt = tree->ownModifiedNs(folder)](qint64 now) {
            // Nothing changed, or the folder was walked again meanwhile.
            if (index.lock() != tree || now == walkedAt || !(tree->state(folder) & Measured) ||
                tree->ownModifiedNs(folder) != walkedAt)
                return;
            // Gone: its own folder is walked again instead.
            refreshFolder(now < 0 && folder != top ? tree->parent(folder) : folder);
        });
}

void SizeTree::refreshParent(const ItemRef& item) {
    if (!tree)
        return;
    const bool sameIndex = item.index.lock() == tree;
    if (item.isRoot || !sameIndex || item.id == kNoEntry || item.id == top) {
        open(rootPath());
        return;
    }
    refreshFolder(tree->parent(item.id));
}

void SizeTree::refreshFolder(EntryId folder) {
    if (!tree || folder == kNoEntry)
        return;
    // Inside a walk that runs: walked again once that walk is over, as it may have read
    // the folder before the change.
    for (const EntryId walked : walks.keys())
        if (walked != folder && isBelowOrAt(*tree, folder, walked)) {
            pendingRefresh.insert(folder);
            return;
        }
    // Walks below it are overtaken by this one. Their folders' ancestors have not moved
    // yet, but a walk of this very folder has emptied it: the totals it had before are
    // the ones to move from.
    std::optional<Walk> overtaken;
    for (const EntryId walked : walks.keys())
        if (isBelowOrAt(*tree, walked, folder)) {
            Walk stopped = walks.take(walked);
            stopped.walk->cancel();
            if (walked == folder)
                overtaken = std::move(stopped);
        }
    startWalk(folder, overtaken);
}
