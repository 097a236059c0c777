#include "core/MainThreadInbox.h"

#include <QCoreApplication>

void MainThreadInbox::post(std::function<void()> work) {
    std::lock_guard guard(lock);
    waiting.push_back(std::move(work));
    if (!drainScheduled)
        scheduleDrain();
}

void MainThreadInbox::scheduleDrain() {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    drainScheduled = true;
    QMetaObject::invokeMethod(
        app,
        [weak = weak_from_this()] {
            if (const std::shared_ptr<MainThreadInbox> inbox = weak.lock())
                inbox->drain();
        },
        Qt::QueuedConnection);
}

void MainThreadInbox::drain() {
    QElapsedTimer slice;
    slice.start();
    bool applied = false;
    for (;;) {
        std::function<void()> next;
        {
            std::lock_guard guard(lock);
            if (waiting.empty()) {
                drainScheduled = false;
                break;
            }
            if (slice.elapsed() >= sliceMs) {
                // The rest after the event loop's next turn.
                scheduleDrain();
                break;
            }
            next = std::move(waiting.front());
            waiting.pop_front();
        }
        next();
        applied = true;
    }
    if (applied && afterSlice)
        afterSlice();
}
