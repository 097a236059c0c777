// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/RevocableJobs.h"

#include "platform/ThreadHandoff.h"

#include <QRunnable>
#include <QThreadPool>
#include <vector>

class RevocableJobs::Job : public QRunnable {
public:
    Job(std::shared_ptr<RevocableJobs> owner, std::function<void()> work)
        : owner(std::move(owner)), work(std::move(work)) {}

    void run() override {
        handOffReceived(this);
        owner->started(this);
        work();
    }

private:
    const std::shared_ptr<RevocableJobs> owner;
    const std::function<void()> work;
};

void RevocableJobs::post(std::function<void()> work, int priority) {
    auto* job = new Job(shared_from_this(), std::move(work));
    {
        std::lock_guard guard(lock);
        waiting.insert(job);
    }
    handOffSent(job);
    pool->start(job, priority); // the pool owns and deletes it
}

void RevocableJobs::started(QRunnable* job) {
    std::lock_guard guard(lock);
    waiting.erase(job);
}

int RevocableJobs::revokeWaiting() {
    std::vector<std::unique_ptr<QRunnable>> revoked;
    {
        std::lock_guard guard(lock);
        for (QRunnable* job : waiting)
            if (pool->tryTake(job)) // ownership comes back with it
                revoked.emplace_back(job);
        waiting.clear();
    }
    return int(revoked.size());
}
