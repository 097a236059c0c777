// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <unordered_set>

class QRunnable;
class QThreadPool;

// Jobs on a shared QThreadPool that can be taken back until they start, so work that
// is no longer wanted never waits in the queue for a thread.
class RevocableJobs : public std::enable_shared_from_this<RevocableJobs> {
public:
    explicit RevocableJobs(QThreadPool* pool) : pool(pool) {}

    // Higher priorities start first.
    void post(std::function<void()> job, int priority = 0);
    // Takes back every job that has not started; returns how many. A job the pool is
    // just starting may still run.
    int revokeWaiting();

private:
    class Job;
    void started(QRunnable* job);

    QThreadPool* const pool;
    std::mutex lock;
    std::unordered_set<QRunnable*> waiting;
};
