// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/WalkScheduler.h"

#include "core/IndexWalk.h"
#include "core/RevocableJobs.h"

#include <algorithm>
#include <chrono>

WalkScheduler::WalkScheduler(QThreadPool* pool, int workers)
    : workers(workers), jobs(std::make_shared<RevocableJobs>(pool)) {}

void WalkScheduler::begin(const std::shared_ptr<IndexWalk>& walk) {
    std::unique_lock held(lock);
    if (stopping)
        return;
    walks.push_back(walk);
    walk->queued.push_back(walk->start());
    addWorkers(held, 1);
}

void WalkScheduler::queue(const std::shared_ptr<IndexWalk>& walk,
                          std::vector<std::shared_ptr<WalkDir>>& dirs) {
    std::unique_lock held(lock);
    // A cancelled walk has left the list; what it still finds goes nowhere.
    if (stopping || walk->isCancelled()) {
        dirs.clear();
        return;
    }
    const size_t count = dirs.size();
    walk->queued.insert(walk->queued.end(), std::make_move_iterator(dirs.begin()),
                        std::make_move_iterator(dirs.end()));
    dirs.clear();
    addWorkers(held, count);
}

void WalkScheduler::addWorkers(std::unique_lock<std::mutex>& held, size_t wanted) {
    const int count = int(std::min<size_t>(wanted, size_t(std::max(0, workers - running))));
    running += count;
    held.unlock();
    for (int i = 0; i < count; ++i)
        jobs->post([self = shared_from_this()] { self->work(); });
}

bool WalkScheduler::take(std::shared_ptr<IndexWalk>& walk, std::shared_ptr<WalkDir>& dir) {
    for (auto newest = walks.rbegin(); newest != walks.rend(); ++newest) {
        std::vector<std::shared_ptr<WalkDir>>& queued = (*newest)->queued;
        if (queued.empty())
            continue;
        walk = *newest;
        dir = std::move(queued.back());
        queued.pop_back();
        return true;
    }
    return false;
}

void WalkScheduler::work() {
    const std::unique_ptr<char[]> buffer(new char[IndexWalk::bufferSize]);
    for (;;) {
        std::shared_ptr<IndexWalk> walk;
        std::shared_ptr<WalkDir> dir;
        {
            std::lock_guard guard(lock);
            if (!take(walk, dir)) {
                if (--running == 0)
                    allStopped.notify_all();
                return;
            }
        }
        walk->read(dir, buffer.get(), *this);
    }
}

std::shared_ptr<IndexWalk> WalkScheduler::remove(IndexWalk& walk) {
    std::lock_guard guard(lock);
    const auto found = std::find_if(walks.begin(), walks.end(),
                                    [&](const auto& active) { return active.get() == &walk; });
    if (found == walks.end())
        return nullptr;
    std::shared_ptr<IndexWalk> removed = std::move(*found);
    walks.erase(found);
    return removed;
}

void WalkScheduler::drop(IndexWalk& walk) {
    // Let go outside the lock: the last reference may take a receiver with it.
    std::vector<std::shared_ptr<WalkDir>> queued;
    const std::shared_ptr<IndexWalk> removed = remove(walk);
    std::lock_guard guard(lock);
    queued.swap(walk.queued);
}

void WalkScheduler::retire(IndexWalk& walk) {
    remove(walk);
}

int WalkScheduler::busy() const {
    std::lock_guard guard(lock);
    return running;
}

void WalkScheduler::shutDown(QDeadlineTimer deadline) {
    std::vector<std::shared_ptr<IndexWalk>> active;
    {
        std::lock_guard guard(lock);
        stopping = true;
        active = walks;
    }
    for (const std::shared_ptr<IndexWalk>& walk : active)
        walk->cancel();
    const int revoked = jobs->revokeWaiting();
    std::unique_lock held(lock);
    running -= revoked;
    // A worker caught in a mount that never answers is not waited for: it holds what
    // it still touches (its walk and this scheduler), and the quit goes on.
    allStopped.wait_for(held, std::chrono::milliseconds(deadline.remainingTime()),
                        [this] { return running == 0; });
}
