// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDeadlineTimer>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

class IndexWalk;
class QThreadPool;
class RevocableJobs;
struct WalkDir;

// Shares a fixed number of workers among the active walks. Workers are jobs on the
// given pool that read folders while there are any and end when there are none, so no
// pool thread ever waits for work. The newest walk's folders go first, and within a
// walk the deepest: the tree is read depth first, which keeps what is queued small.
class WalkScheduler : public std::enable_shared_from_this<WalkScheduler> {
public:
    WalkScheduler(QThreadPool* pool, int workers);

    // A new walk, its own folder first.
    void begin(const std::shared_ptr<IndexWalk>& walk);
    // More folders of a walk; taken from `dirs`. Dropped when the walk is cancelled.
    void queue(const std::shared_ptr<IndexWalk>& walk, std::vector<std::shared_ptr<WalkDir>>& dirs);
    // The walk is cancelled: its queued folders go.
    void drop(IndexWalk& walk);
    // The walk has ended.
    void retire(IndexWalk& walk);
    // Workers reading folders now.
    int busy() const;
    // Cancels every walk and returns once no worker runs, or at the deadline when a
    // worker is caught in the file system.
    void shutDown(QDeadlineTimer deadline);

private:
    // Starts up to `wanted` more workers, never more than the set number in all.
    void addWorkers(std::unique_lock<std::mutex>& held, size_t wanted);
    void work();
    bool take(std::shared_ptr<IndexWalk>& walk, std::shared_ptr<WalkDir>& dir);
    std::shared_ptr<IndexWalk> remove(IndexWalk& walk);

    const int workers;
    const std::shared_ptr<RevocableJobs> jobs;
    mutable std::mutex lock;
    std::condition_variable allStopped;
    // Oldest first.
    std::vector<std::shared_ptr<IndexWalk>> walks;
    // Workers started and not yet ended.
    int running = 0;
    bool stopping = false;
};
