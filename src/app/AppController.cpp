#include "app/AppController.h"

#include "actions/FileActions.h"

AppController::AppController(QObject* parent)
    : QObject(parent), sizeQueue(new QThreadPool), lifeFlag(StopFlag::make()),
      treeFlag(StopFlag::make(lifeFlag)), inbox(MainThreadInbox::make()) {
    sizeQueue->setMaxThreadCount(6);
    engine = makeMeasureEngine(sizeQueue);
    inbox->displayWorkDue = [this] { return rowsDueForAnnouncement(); };
    inbox->displayWork = [this] { showDueRows(); };
}

AppController::~AppController() {
    // Measuring and actions stop together, and are waited for two seconds in all.
    const QDeadlineTimer quitBy(2000);
    if (actions)
        actions->stopJobs(quitBy);
    // Nothing queued starts now, and the du children that are running end, so the
    // workers come back at once.
    lifeFlag->stop();
    inbox->displayWorkDue = nullptr;
    inbox->displayWork = nullptr;
    dropTreeWork();
    engine.reset();
    sizeQueue->clear();
    // Should a worker still be caught in the file system (a mount that does not
    // answer), the queue is left to finish on its own rather than hang the quit.
    if (sizeQueue->waitForDone(int(quitBy.remainingTime())))
        delete sizeQueue;
}
