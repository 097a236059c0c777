// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/IndexWalk.h"

#include <QDeadlineTimer>
#include <memory>
#include <optional>

class QThreadPool;

// Walks folders into an index, on a few workers of the given pool, without ever
// blocking one of them to wait for other work. When several walks are active the
// newest goes first: it is the folder the person just opened.
class WalkEngine {
public:
    WalkEngine(QThreadPool* pool, int workers = defaultWorkers());
    // Stops every walk; once it returns no worker touches what the walks owned, but for
    // one caught in a file system past the quit deadline.
    ~WalkEngine();
    WalkEngine(const WalkEngine&) = delete;
    WalkEngine& operator=(const WalkEngine&) = delete;

    // The number of workers a walk is spread over on this machine.
    static int defaultWorkers();

    // Walks `folder` of the index (at `path`) and everything below it.
    std::shared_ptr<IndexWalk> walk(std::shared_ptr<SizeIndex> index, EntryId folder,
                                    QByteArray path, WalkOptions options,
                                    std::shared_ptr<WalkListener> listener);
    // Workers reading folders now.
    int busyWorkers() const;
    void setQuitDeadline(QDeadlineTimer deadline) { quitDeadline = deadline; }

private:
    const std::shared_ptr<WalkScheduler> scheduler;
    std::optional<QDeadlineTimer> quitDeadline;
};
