// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/ActionJobs.h"

#include <thread>

ActionJobs::ActionJobs() : shared(std::make_shared<Shared>()) {}

void ActionJobs::start(std::function<void(const std::atomic<bool>& stop)> job) {
    {
        const std::lock_guard guard(shared->lock);
        ++shared->running;
    }
    // Detached: a thread caught in a file system must not hold up the quit. It holds the
    // shared state itself, so it may outlive this object.
    std::thread([state = shared, job = std::move(job)] {
        job(state->stop);
        const std::lock_guard guard(state->lock);
        --state->running;
        state->ended.notify_all();
    }).detach();
}

void ActionJobs::stopAll() {
    shared->stop = true;
}

bool ActionJobs::waitForAll(std::chrono::milliseconds patience) {
    std::unique_lock lock(shared->lock);
    return shared->ended.wait_for(lock, patience, [this] { return shared->running == 0; });
}

int ActionJobs::running() const {
    const std::lock_guard guard(shared->lock);
    return shared->running;
}
