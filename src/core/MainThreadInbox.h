#pragma once

#include <QDeadlineTimer>
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

    // Safe from any thread; the work runs on the main thread, unless the inbox is gone.
    void post(std::function<void()> work);
    // Applies what has come, one slice at most; called by the event loop.
    void drain();
    // Runs on the main thread after each slice that applied something; true when it
    // gave the display work of its own (new rows to lay out), which then gets
    // displayTurnMs before the next slice.
    std::function<bool()> afterSlice;

    // Time one slice may take.
    static constexpr qint64 sliceMs = 8;
    static constexpr qint64 displayTurnMs = 2;

private:
    MainThreadInbox() = default;
    void scheduleDrain();

    std::mutex lock;
    std::deque<std::function<void()>> waiting;
    bool drainScheduled = false;
    // Main thread only.
    QDeadlineTimer displayTurn;
};
