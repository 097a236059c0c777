// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QElapsedTimer>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

// Results that workers hand to the main thread. They are applied in the order they
// came, a slice of at most one frame's time at once: between slices the event loop
// paints and answers input, so a flood of results never freezes the window.
class MainThreadInbox : public std::enable_shared_from_this<MainThreadInbox> {
public:
    static std::shared_ptr<MainThreadInbox> make() {
        return std::shared_ptr<MainThreadInbox>(new MainThreadInbox);
    }
    // The program's inbox for results that need no display work of their own (the
    // measuring engine has one of its own, paced with the outline).
    static const std::shared_ptr<MainThreadInbox>& shared();

    // Safe from any thread; the work runs on the main thread, unless the inbox is gone.
    void post(std::function<void()> work);
    // Applies what has come, one slice at most; called by the event loop.
    void drain();
    // Runs on the main thread after each slice that applied something: true when the
    // display has work due (new rows to take in and lay out). That work, displayWork,
    // then runs in a pass of the event loop of its own, after this slice and before the
    // next one, so neither shares a pass with the other.
    std::function<bool()> displayWorkDue;
    std::function<void()> displayWork;

    // Time one slice may take.
    static constexpr qint64 sliceMs = 8;

private:
    MainThreadInbox() = default;
    // Both with the lock held.
    void scheduleDrain();
    void continueOrRest();

    std::mutex lock;
    std::deque<std::function<void()>> waiting;
    // A drain is posted, or under way, or waits for the display's work.
    bool drainScheduled = false;
};
