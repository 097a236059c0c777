// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/IndexSource.h"
#include "core/IndexWalk.h"
#include "core/ItemRef.h"
#include "core/SizeIndex.h"
#include "platform/MainThreadInbox.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QSet>
#include <memory>
#include <optional>
#include <vector>

class QThreadPool;
class TreeDisplay;
class WalkEngine;

// The size tree of the opened folder: one walk keeps an index of everything below it,
// and every folder below is then shown from the index without walking it again. A
// folder's rows come as it is listed; each level is put largest-first once its sizes
// are in. After a change on disk only the folder that changed is walked again, and its
// ancestors' totals move by the difference.
class SizeTree : public IndexSource {
    Q_OBJECT
public:
    explicit SizeTree(QObject* parent = nullptr);
    // Stops every walk; waits for the workers until the quit deadline at most.
    ~SizeTree() override;

    // Makes the folder the root. An index that already holds it, fully measured, is kept
    // and shown from there; otherwise a new one is made by a walk of the folder.
    void open(const QByteArray& path);
    // Walks the opened folder again, into a new index.
    void refresh();
    // Ends every walk at once: what is not measured is marked as what was found so far.
    void stop();
    // A walk of the opened folder (or of a folder in it) runs.
    bool isWalking() const override;
    // The opened folder is measured anew: opened or refreshed, not walked again in
    // part after a change.
    bool isWalkingRoot() const;

    const std::shared_ptr<SizeIndex>& index() const { return tree; }
    // The opened folder's entry, none before a folder is opened.
    EntryId root() const { return top; }
    // The opened folder's path.
    QByteArray rootPath() const;
    ItemRef itemAt(EntryId id) const override;

    // The display shows the folder's rows, the first `count` of its listing: what the
    // index holds is used at once, and the folder is walked again in the background
    // should its listing have changed since.
    void rowsShown(EntryId folder, size_t count);
    // After a change on disk: the item's folder is walked again (the opened folder when
    // the item is the opened folder itself, which is then opened again).
    void refreshParent(const ItemRef& item);
    // Walks the folder again, in place.
    void refreshFolder(EntryId folder);

    // How far the walk of the opened folder has got.
    quint64 itemsWalked() const;
    qint64 bytesFound() const;
    // When the opened folder's walk last ended complete.
    const QDateTime& measuredAt() const { return completedAt; }
    // The walk was stopped before its end.
    bool wasStopped() const { return stopped; }

    // Volumes mounted inside are counted (du -sk) or left out (du -skx); applies from
    // the next walk on.
    void setCountMounts(bool count) { options.countMounts = count; }
    // Whatever shows the tree (the outline's model); none by default.
    void setDisplay(TreeDisplay* display);
    // How long the destructor may wait for workers caught in a file system.
    void setQuitDeadline(QDeadlineTimer deadline);
    // The workers' pool, for tests that need to see what it holds.
    QThreadPool& workers() const { return *sizeQueue; }
    // Workers reading folders now, for tests and benchmarks.
    int busyWorkers() const;

    // IndexSource
    std::shared_ptr<const SizeIndex> shownIndex() const override { return tree; }
    EntryId openedFolder() const override { return top; }

Q_SIGNALS:
    // The root's total is in: its first walk ended, or was stopped.
    void rootMeasured();
    // A walk started or ended.
    void walkingChanged(bool walking);

private:
    class Listener;
    friend class Listener;
    using Tag = std::shared_ptr<const int>;
    struct Walk {
        std::shared_ptr<IndexWalk> walk;
        Tag tag;
        // The totals the folder had before, to move its ancestors by the difference.
        qint64 oldBlocks = 0, oldApparent = 0, oldItems = 0, oldUnreadable = 0;
        // Walked again in place, rather than a new index's first walk.
        bool splice = false;
    };
    // A walk of the folder it overtakes, if any, gives the totals it had before.
    void startWalk(EntryId folder, const std::optional<Walk>& overtaken = std::nullopt);
    // Results of the walk of `walked` made under `tag`, dropped unless it is still the
    // folder's walk.
    void applyListed(EntryId walked, EntryId folder, const Tag& tag);
    void applyMeasured(EntryId walked, EntryId folder, const Tag& tag);
    void applyEnded(EntryId walked, const Tag& tag);
    bool isCurrent(EntryId walked, const Tag& tag) const;
    void dropWalks();
    // What a stopped walk left: each folder not measured below `folder` gets what was
    // found so far, as at least its total.
    void markPartial(EntryId folder);
    EntryId findBelow(EntryId folder, const QByteArray& relative) const;

    // Rows: new ones are announced in batches, and a level is sorted over two turns of
    // the event loop once its sizes are in (SizeTreeRows.cpp).
    void noteListed(EntryId folder);
    bool announceNewRows();
    bool rowsDueForAnnouncement();
    void rowsDueNow(EntryId folder);
    void lookAtHeldRowsInTime();
    void showDueRows();
    void sortWhenMeasured(EntryId folder);
    void sortLevel(EntryId folder, const std::shared_ptr<SizeIndex>& sorted,
                   const std::vector<EntryId>& order);

    std::shared_ptr<SizeIndex> tree;
    EntryId top = kNoEntry;
    // Runs every walk's workers; at most six at once.
    QThreadPool* const sizeQueue;
    std::unique_ptr<WalkEngine> engine;
    TreeDisplay* display = nullptr;
    WalkOptions options;
    std::optional<QDeadlineTimer> quitDeadline;
    // The walks running, by the folder they walk.
    QHash<EntryId, Walk> walks;
    // Rows the display has of each folder, as far as they were announced.
    QHash<EntryId, size_t> announced;
    // Brings the walks' results to the main thread in slices.
    const std::shared_ptr<MainThreadInbox> inbox;
    // Folders with rows listed but not yet announced, and how long they may still wait
    // (none once their listing has ended).
    struct Unannounced {
        EntryId folder;
        QDeadlineTimer held;
    };
    std::vector<Unannounced> unannounced;
    bool isDue(const Unannounced& run) const;
    // A look at the rows held back is due.
    bool heldRowsTimed = false;
    // Folders to walk again once the walk they are in is over.
    QSet<EntryId> pendingRefresh;
    QDateTime completedAt;
    bool stopped = false;
};
