#include "app/AppController.h"
#include "platform/MountMonitor.h"
#include "platform/MountTable.h"
#include "ui/Style.h"
#include "ui/UiFont.h"
#include "volumes/ListedVolume.h"
#include "volumes/PermissionSettings.h"
#include "volumes/VolumeRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

QWidget* AppController::makeVolumesPanel() {
    volHeaderLabel = new QLabel(t(QStringLiteral("vol_header")));
    volHeaderLabel->setFont(uiFont(11, QFont::DemiBold));
    setTextColor(volHeaderLabel, secondaryTextColor());

    grantButton = new QPushButton(t(QStringLiteral("vol_grant")));
    grantButton->setFont(uiFont(10));
    connect(grantButton, &QPushButton::clicked, this, &AppController::openFullDiskAccess);

    auto* header = new QHBoxLayout;
    header->setContentsMargins(0, 0, 0, 0);
    header->setSpacing(8);
    header->addWidget(volHeaderLabel, 0, Qt::AlignVCenter);
    header->addStretch(1);
    header->addWidget(grantButton, 0, Qt::AlignVCenter);

    volumesList = new QWidget;
    auto* list = new QVBoxLayout(volumesList);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(5);

    volumesPanel = new QWidget;
    auto* panel = new QVBoxLayout(volumesPanel);
    panel->setContentsMargins(0, 0, 0, 0);
    panel->setSpacing(7);
    panel->addLayout(header);
    panel->addWidget(volumesList);

    // A child of the controller: mount events reach it for as long as it lives.
    auto* monitor = new MountMonitor(this);
    connect(monitor, &MountMonitor::changed, this, &AppController::volumesChanged);
    return volumesPanel;
}

void AppController::refreshVolumes() {
    if (!volumesList)
        return;
    QLayout* list = volumesList->layout();
    while (QLayoutItem* item = list->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const VolumeInfo& volume : mountedVolumes()) {
        if (const auto listed = listedVolume(volume))
            list->addWidget(makeVolumeRow(listed->name, listed->freeBytes, listed->totalBytes,
                                          listed->internal));
    }
}

void AppController::volumesChanged() {
    refreshVolumes();
}

void AppController::openFullDiskAccess() {
    if (const auto settings = appPermissionsSettings())
        QProcess::startDetached(settings->program, settings->arguments);
}
