#include "app/AppController.h"

AppController::AppController(QObject* parent) : QObject(parent), sizeQueue(new QThreadPool) {
    sizeQueue->setMaxThreadCount(6);
}

AppController::~AppController() {
    sizeQueue->clear();
    // A du over a large folder can run for minutes. Waiting for it here would hang
    // the quit, so a busy queue is left to finish on its own: its results find no
    // controller and are dropped.
    if (sizeQueue->activeThreadCount() == 0)
        delete sizeQueue;
}
