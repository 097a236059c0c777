#include "app/AppController.h"
#include "platform/MountMonitor.h"
#include "platform/MountTable.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"
#include "views/ListedVolume.h"
#include "views/PermissionSettings.h"
#include "views/VolumeReader.h"
#include "views/VolumeRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

QWidget* AppController::makeVolumesPanel() {
    volHeaderLabel = makePlainLabel(t(QStringLiteral("vol_header")));
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

    // Patience enough for a volume that answers at all; one that does not shows
    // without figures rather than hold the panel back.
    volumeReader = new VolumeReader(std::chrono::milliseconds(250), this);
    connect(volumeReader, &VolumeReader::volumesRead, this, &AppController::showVolumeRows);
    // A child of the controller: mount events reach it for as long as it lives.
    auto* monitor = new MountMonitor(this);
    connect(monitor, &MountMonitor::changed, this, &AppController::volumesChanged);
    return volumesPanel;
}

void AppController::refreshVolumes() {
    // The rows are rebuilt when the volumes have answered (showVolumeRows).
    if (volumesList && volumeReader)
        volumeReader->read();
}

void AppController::showVolumeRows(const QList<VolumeInfo>& volumes) {
    QLayout* list = volumesList->layout();
    while (QLayoutItem* item = list->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const VolumeInfo& volume : volumes) {
        const auto listed = listedVolume(volume);
        if (!listed)
            continue;
        list->addWidget(listed->answered ? makeVolumeRow(listed->name, listed->freeBytes,
                                                         listed->totalBytes, listed->internal)
                                         : makeSilentVolumeRow(listed->name, listed->internal));
    }
}

void AppController::volumesChanged() {
    refreshVolumes();
}

void AppController::openFullDiskAccess() {
    if (const auto settings = appPermissionsSettings())
        QProcess::startDetached(settings->program, settings->arguments);
}
