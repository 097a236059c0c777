#include "app/AppController.h"

#include "platform/ChildProcess.h"

AppController::AppController(QObject* parent) : QObject(parent), sizeQueue(new QThreadPool) {
    sizeQueue->setMaxThreadCount(6);
}

AppController::~AppController() {
    sizeQueue->clear();
    terminateRunningChildren();
    // The du processes were just told to stop; should a worker still be busy, the
    // queue is left to finish on its own rather than hang the quit: its results find
    // no controller and are dropped.
    if (sizeQueue->activeThreadCount() == 0)
        delete sizeQueue;
}
