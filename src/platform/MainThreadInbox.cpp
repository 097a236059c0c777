// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/MainThreadInbox.h"

#include <QCoreApplication>
#include <QTimer>

const std::shared_ptr<MainThreadInbox>& MainThreadInbox::shared() {
    static const std::shared_ptr<MainThreadInbox> inbox = make();
    return inbox;
}

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
            // The rest after the event loop's next turn.
            if (waiting.empty() || slice.elapsed() >= sliceMs)
                break;
            next = std::move(waiting.front());
            waiting.pop_front();
        }
        next();
        applied = true;
    }
    // The display's work runs in a pass of the event loop of its own: in this one, Qt
    // would lay the new rows out right after the slice. The next slice comes in a pass
    // after that work; until then the drain counts as scheduled, so no result starts
    // one sooner. Both go by timers: Qt runs timers only once no posted call is left,
    // so a posted call would run the display's pass into the next slice's.
    if (applied && displayWorkDue && displayWorkDue()) {
        QTimer::singleShot(1, QCoreApplication::instance(), [weak = weak_from_this()] {
            const std::shared_ptr<MainThreadInbox> inbox = weak.lock();
            if (!inbox)
                return;
            if (inbox->displayWork)
                inbox->displayWork();
            std::lock_guard guard(inbox->lock);
            if (inbox->waiting.empty())
                inbox->drainScheduled = false;
            else
                QTimer::singleShot(1, QCoreApplication::instance(), [weak] {
                    if (const std::shared_ptr<MainThreadInbox> inbox = weak.lock())
                        inbox->drain();
                });
        });
        return;
    }
    std::lock_guard guard(lock);
    continueOrRest();
}

void MainThreadInbox::continueOrRest() {
    if (waiting.empty())
        drainScheduled = false;
    else
        scheduleDrain();
}
