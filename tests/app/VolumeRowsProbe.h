#pragma once

#include "app/AppController.h"

#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

// A volumes list holding one row from before: rebuilding the rows removes it.
inline QPointer<QLabel> giveVolumesListAnOldRow(AppController& controller, QWidget* parent) {
    controller.volumesList = new QWidget(parent);
    auto* rows = new QVBoxLayout(controller.volumesList);
    auto* old = new QLabel(QStringLiteral("old row"), controller.volumesList);
    rows->addWidget(old);
    return old;
}
