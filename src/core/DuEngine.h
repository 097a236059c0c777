// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/MeasureEngine.h"

#include <mutex>

// Measures with du, one process per child folder and one for the listed folder: the
// reference the in-process engine is held to, chosen with SIZELOOM_MEASURE=du. Each
// walk's jobs go before those of older walks.
class DuEngine : public MeasureEngine {
public:
    explicit DuEngine(QThreadPool* pool) : pool(pool) {}
    // Cancels every walk: queued du runs never start, running ones are ended.
    ~DuEngine() override;

    std::shared_ptr<WalkTicket> walkFolder(const QByteArray& folder,
                                           std::shared_ptr<WalkReceiver> receiver) override;
    std::shared_ptr<WalkTicket> measureItem(const QByteArray& path, bool isDir,
                                            std::function<void(qint64)> done) override;

private:
    // Remembers the walk for the destructor; returns its priority, above every older one.
    int enroll(const std::shared_ptr<WalkTicket>& walk);

    QThreadPool* const pool;
    std::mutex lock;
    std::vector<std::weak_ptr<WalkTicket>> walks;
    int newest = 0;
};
