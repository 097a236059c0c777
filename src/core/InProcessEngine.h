// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/FolderWalk.h"
#include "core/MeasureEngine.h"

class WalkScheduler;

// Measures inside the program, with du's numbers and no child process: one pass over
// a listed folder's tree gives every child's total and the folder's own, read by a
// few workers at once.
class InProcessEngine : public MeasureEngine {
public:
    InProcessEngine(QThreadPool* pool, int workers);
    ~InProcessEngine() override;

    // The number of workers a walk is spread over on this machine.
    static int defaultWorkers();

    std::shared_ptr<WalkTicket> walkFolder(const QByteArray& folder,
                                           std::shared_ptr<WalkReceiver> receiver) override;
    std::shared_ptr<WalkTicket> measureItem(const QByteArray& path, bool isDir,
                                            std::function<void(qint64)> done) override;

private:
    std::shared_ptr<WalkTicket> begin(const QByteArray& path, FolderWalk::Kind kind,
                                      std::shared_ptr<WalkReceiver> receiver);

    const std::shared_ptr<WalkScheduler> scheduler;
};
