// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/SizeIndex.h"

#include <QByteArray>
#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

class WalkScheduler;

// How a walk counts.
struct WalkOptions {
    // Volumes mounted inside are entered and counted, as `du -sk` does; otherwise they
    // are left out, as `du -skx` does.
    bool countMounts = true;
};

// What a walk tells whoever started it. Called on the walk's threads, never two calls
// at once for one walk; quick, and never waiting for the main thread (results are
// queued for it). cancel() waits for a call under way.
class WalkListener {
public:
    virtual ~WalkListener() = default;
    // More entries of the folder are in the index.
    virtual void listed(EntryId folder) = 0;
    // The folder's total is in.
    virtual void measured(EntryId folder) = 0;
    // The last call: the walked folder is measured.
    virtual void ended() = 0;
};

// How far a walk has got: entries seen and 512-byte blocks found so far.
struct WalkProgress {
    std::atomic<quint64> items{0};
    std::atomic<qint64> blocks{0};
};

// A file's sizes, kept for each hard-linked file met in a folder's subtree so that it is
// counted once in each total.
struct LinkedSizes {
    qint64 blocks;
    qint64 apparent;
};
struct FileKey {
    quint64 dev;
    quint64 ino;
    bool operator==(const FileKey&) const = default;
};
struct FileKeyHash {
    size_t operator()(const FileKey& key) const {
        return size_t(key.ino * 0x9E3779B97F4A7C15ULL) ^ size_t(key.dev);
    }
};

// The running totals of one folder being walked: its own entries and the folders below
// it that are done. Gone once the folder's total is in the index.
struct WalkTally {
    WalkTally(EntryId id, std::shared_ptr<WalkTally> parent) : id(id), parent(std::move(parent)) {}
    const EntryId id;
    const std::shared_ptr<WalkTally> parent;
    // Its own reading and the folders below it not done yet.
    std::atomic<qint64> outstanding{1};
    std::mutex lock; // guards what follows
    qint64 blocks = 0;
    qint64 apparent = 0;
    quint32 items = 0;
    quint32 unreadable = 0;
    quint32 newest = 0;
    quint16 state = 0;
    std::unordered_map<FileKey, LinkedSizes, FileKeyHash> links;
};

// One folder to read, known by its name below its parent: the chain up to the walked
// folder gives both its path and its ancestors (a folder met again below itself, as a
// bind mount can make it, is not entered twice).
struct WalkDir {
    WalkDir(std::shared_ptr<WalkDir> parent, QByteArray name, std::shared_ptr<WalkTally> tally);
    ~WalkDir();
    bool isWalkedFolder() const { return !parent; }

    std::shared_ptr<WalkDir> parent;
    const QByteArray name;
    const std::shared_ptr<WalkTally> tally;
    // Set by the worker that reads it, before anything below it is queued.
    quint64 dev = 0;
    quint64 ino = 0;
};

// One walk of a folder of the index: every entry below it goes into the index, and every
// folder's total (as `du -sk` of that folder gives it) as soon as its subtree is read,
// the walked folder's last. Read by the scheduler's workers, the deepest folders first.
class IndexWalk : public std::enable_shared_from_this<IndexWalk> {
public:
    IndexWalk(std::shared_ptr<SizeIndex> index, EntryId folder, QByteArray path,
              WalkOptions options, std::shared_ptr<WalkListener> listener,
              std::weak_ptr<WalkScheduler> scheduler);

    // Once it has returned, no listener call begins (a call under way is waited for) and
    // the walk's queued folders are dropped. Workers inside a folder finish it and stop.
    void cancel();
    bool isCancelled() const { return cancelled.load(std::memory_order_acquire); }
    const WalkProgress& progress() const { return counted; }
    EntryId folder() const { return walked; }

    // The first folder to read: the walked one.
    std::shared_ptr<WalkDir> start();
    // Reads one queued folder; `buffer` (of bufferSize bytes) is the worker's own.
    void read(const std::shared_ptr<WalkDir>& dir, char* buffer, WalkScheduler& scheduler);
    static constexpr size_t bufferSize = 32 * 1024;
    // Entries put into the index at once: small enough that a huge folder shows its
    // first rows soon, large enough that few folders have more than one run.
    static constexpr size_t kBatch = 1024;

    // Kept by the scheduler under its lock: folders waiting, the deepest last.
    std::vector<std::shared_ptr<WalkDir>> queued;

private:
    struct Reading;
    bool look(WalkDir& dir, int& fd);
    void readEntries(const std::shared_ptr<WalkDir>& dir, int fd, char* buffer,
                     WalkScheduler& scheduler);
    void finish(const std::shared_ptr<WalkTally>& tally);
    template <typename Call> void tell(Call&& call);

    const std::shared_ptr<SizeIndex> index;
    const EntryId walked;
    const QByteArray path;
    const WalkOptions options;
    const std::weak_ptr<WalkScheduler> scheduler;
    WalkProgress counted;
    std::atomic<bool> cancelled{false};
    // Recursive: a listener may cancel its own walk from inside a call.
    std::recursive_mutex callLock;
    std::shared_ptr<WalkListener> listener;
};
