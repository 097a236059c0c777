// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <memory>

// Says whether queued work is still wanted. Work checks it before it starts and before
// it hands a result back; stopping a flag also ends the child processes started under
// it. A flag is stopped when its parent is: the controller's life, a tree, a listing.
class StopFlag {
public:
    explicit StopFlag(std::shared_ptr<const StopFlag> parent = {}) : parent(std::move(parent)) {}

    static std::shared_ptr<StopFlag> make(std::shared_ptr<const StopFlag> parent = {}) {
        return std::make_shared<StopFlag>(std::move(parent));
    }

    // Irreversible; safe from any thread.
    void stop();
    bool isStopped() const {
        return stopped.load(std::memory_order_acquire) || (parent && parent->isStopped());
    }

private:
    std::atomic<bool> stopped{false};
    const std::shared_ptr<const StopFlag> parent;
};

using StopFlagPtr = std::shared_ptr<StopFlag>;
