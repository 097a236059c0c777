// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

// Runs file actions on threads of their own: never on the measuring workers, so an
// action never waits behind a walk, nor a walk behind an action caught in a file system
// that does not answer. At quit the running ones are asked to stop and waited for a
// bounded time; one still caught then is left to end with the program.
class ActionJobs {
public:
    ActionJobs();
    ActionJobs(const ActionJobs&) = delete;
    ActionJobs& operator=(const ActionJobs&) = delete;

    // Starts the job on a new thread. `stop` is set when the program quits.
    void start(std::function<void(const std::atomic<bool>& stop)> job);
    // Asks every running job to stop.
    void stopAll();
    // Waits until no job runs, or the patience is used up; true when none runs.
    bool waitForAll(std::chrono::milliseconds patience);
    int running() const;

private:
    struct Shared {
        mutable std::mutex lock;
        std::condition_variable ended;
        int running = 0;
        std::atomic<bool> stop{false};
    };
    const std::shared_ptr<Shared> shared;
};
