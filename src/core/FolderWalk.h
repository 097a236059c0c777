// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/MeasureEngine.h"

#include <sys/stat.h>
#include <unordered_set>

class WalkScheduler;

// A total as du -sk gives it: 512-byte blocks summed, rounded up to whole KiB once,
// at the end.
qint64 duTotalBytes(qint64 blocks);

// Files with more than one hard link already counted, by device and inode.
struct LinkedFile {
    dev_t dev;
    ino_t ino;
    bool operator==(const LinkedFile&) const = default;
};
struct LinkedFileHash {
    size_t operator()(const LinkedFile& file) const {
        return size_t(file.ino * 0x9E3779B97F4A7C15ULL) ^ size_t(file.dev);
    }
};
using LinkedFiles = std::unordered_set<LinkedFile, LinkedFileHash>;

// The running total of one child folder of the walked folder, counted as `du -sk CHILD`.
struct ChildTally {
    explicit ChildTally(size_t index) : index(index) {}
    // The child's place in the listing.
    const size_t index;
    // In 512-byte blocks, as st_blocks counts.
    std::atomic<qint64> blocks{0};
    // Folders of the child's subtree queued or being read.
    std::atomic<qint64> outstanding{0};
    // Guarded by FolderWalk's link lock while the child is being read.
    LinkedFiles links;
};

// One folder to read, known by its name below its parent; the chain up to the walked
// folder gives both its path and its ancestors (a folder met again below itself, as a
// bind mount can make it, is not entered twice).
struct WalkDir {
    WalkDir(std::shared_ptr<WalkDir> parent, QByteArray name, const struct stat& st,
            std::shared_ptr<ChildTally> child, bool countsForFolder);
    // A folder of the walked one, not looked at yet: the worker that reads it does.
    WalkDir(std::shared_ptr<WalkDir> parent, QByteArray name, std::shared_ptr<ChildTally> child);
    // The walked folder itself: its path as given.
    explicit WalkDir(QByteArray path);
    ~WalkDir();

    bool isWalkedFolder() const { return !parent; }

    std::shared_ptr<WalkDir> parent;
    const QByteArray name;
    // Set before any folder below it is queued.
    dev_t dev = 0;
    ino_t ino = 0;
    // The child of the walked folder this folder belongs to; none in total-only walks.
    const std::shared_ptr<ChildTally> child;
    // False below a bind mount of the walked folder into one of its children: counted
    // for that child (its own du enters it) but not again for the folder.
    bool countsForFolder = true;
    // Its own stat is still to be taken (by the worker that reads it, before it reads).
    const bool unlooked = false;
};

// One walk: the folder's listing, its children's totals and its own, from one pass
// over the tree on the scheduler's workers.
class FolderWalk : public WalkTicket, public std::enable_shared_from_this<FolderWalk> {
public:
    enum class Kind {
        Listing,   // deliver the entries and every child's total, then the folder's
        TotalOnly, // the folder's total alone
        SingleItem // the item's own allocated size, not entering it
    };
    FolderWalk(QByteArray path, Kind kind, std::shared_ptr<WalkReceiver> receiver,
               std::weak_ptr<WalkScheduler> scheduler);

    // The first folder to read: the walked one.
    std::shared_ptr<WalkDir> start() const;
    // Reads one queued folder; `buffer` (of bufferSize bytes) is the worker's own.
    void read(const std::shared_ptr<WalkDir>& dir, char* buffer, WalkScheduler& scheduler);
    static constexpr size_t bufferSize = 32 * 1024;

    // Kept by the scheduler under its lock: folders waiting, the deepest last.
    std::vector<std::shared_ptr<WalkDir>> queued;

protected:
    void dropQueuedWork() override;

private:
    struct Counts {
        qint64 child = 0;
        qint64 folder = 0;
    };
    void measureItem(WalkScheduler& scheduler);
    void readWalkedFolder(const std::shared_ptr<WalkDir>& dir, char* buffer,
                          WalkScheduler& scheduler);
    void readBelow(const std::shared_ptr<WalkDir>& dir, char* buffer, WalkScheduler& scheduler);
    bool lookAtFolderOfWalked(WalkDir& dir, Counts& counts);
    void countFile(const WalkDir& dir, const struct stat& st, Counts& counts);
    void queue(std::vector<std::shared_ptr<WalkDir>>& found, WalkScheduler& scheduler);
    void finish(const WalkDir& dir, const Counts& counts, WalkScheduler& scheduler);
    void childDone(const ChildTally& child);

    const QByteArray path;
    const Kind kind;
    const std::weak_ptr<WalkScheduler> scheduler;
    std::atomic<qint64> folderBlocks{0};
    // Folders queued or being read; the walk ends when none is left.
    std::atomic<qint64> outstanding{1};
    std::mutex linkLock;
    LinkedFiles folderLinks;
};
