// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/MainThreadInbox.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <thread>

// Runs `work` on a thread of its own and hands its result to `done` on the main thread,
// through the program's inbox, unless `context` is gone by then. A thread of its own,
// not a pool's: work caught in a file system that does not answer holds nothing else
// up, and is not waited for when the program quits.
template <typename Result>
void runInBackground(QObject* context, std::function<Result()> work,
                     std::function<void(Result)> done) {
    std::thread([context = QPointer<QObject>(context), work = std::move(work),
                 done = std::move(done)]() mutable {
        Result result = work();
        MainThreadInbox::shared()->post(
            [context, done = std::move(done), result = std::move(result)]() mutable {
                if (context)
                    done(std::move(result));
            });
    }).detach();
}
