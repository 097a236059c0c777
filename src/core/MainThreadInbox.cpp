#include "core/MainThreadInbox.h"

#include <QCoreApplication>
#include <QTimer>

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
    // The display is laying out what the last slice gave it: that gets a turn of the
    // event loop of its own, apart from the next slice.
    if (const qint64 left = displayTurn.remainingTime(); left > 0) {
        QTimer::singleShot(left, QCoreApplication::instance(), [weak = weak_from_this()] {
            if (const std::shared_ptr<MainThreadInbox> inbox = weak.lock())
                inbox->drain();
        });
        return;
    }
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
    if (applied && afterSlice && afterSlice())
        displayTurn.setRemainingTime(displayTurnMs);
}
