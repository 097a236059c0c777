// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/MeasureEngine.h"

#include "core/DuEngine.h"
#include "core/InProcessEngine.h"

#include <QtGlobal>

WalkTicket::WalkTicket(std::shared_ptr<WalkReceiver> receiver) : receiver(std::move(receiver)) {}

void WalkTicket::cancel() {
    std::shared_ptr<WalkReceiver> released;
    {
        std::lock_guard lock(callLock);
        cancelled.store(true, std::memory_order_release);
        released = std::move(receiver);
    }
    dropQueuedWork();
}

void WalkTicket::deliverLast(const std::function<void(WalkReceiver&)>& call) {
    std::shared_ptr<WalkReceiver> released;
    std::lock_guard lock(callLock);
    if (!receiver)
        return;
    call(*receiver);
    // Whatever the receiver holds (nodes, the controller's queue) is let go with it.
    released = std::move(receiver);
}

namespace {

class TotalOnlyReceiver : public WalkReceiver {
public:
    explicit TotalOnlyReceiver(std::function<void(qint64)> done) : done(std::move(done)) {}
    void entriesListed(std::vector<WalkEntry>&&) override {}
    void listingEnded(size_t) override {}
    void childMeasured(size_t, qint64) override {}
    void walkEnded(qint64 folderBytes) override { done(folderBytes); }

private:
    const std::function<void(qint64)> done;
};

} // namespace

std::shared_ptr<WalkReceiver> totalOnlyReceiver(std::function<void(qint64)> done) {
    return std::make_shared<TotalOnlyReceiver>(std::move(done));
}

std::unique_ptr<MeasureEngine> makeMeasureEngine(QThreadPool* pool) {
    if (qgetenv("SIZELOOM_MEASURE") == "du")
        return std::make_unique<DuEngine>(pool);
    return std::make_unique<InProcessEngine>(pool, InProcessEngine::defaultWorkers());
}
