// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/VolumesPanel.h"

#include "platform/MountMonitor.h"
#include "text/Lang.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"
#include "views/ListedVolume.h"
#include "views/PermissionSettings.h"
#include "views/VolumeReader.h"
#include "views/VolumeRow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

VolumesPanel::VolumesPanel(QWidget* parent)
    : QWidget(parent), header(makePlainLabel()), grant(new QPushButton), rowList(new QWidget),
      scroller(new QScrollArea),
      // Patience enough for a volume that answers at all; one that does not shows
      // without figures rather than hold the panel back.
      reader(new VolumeReader(std::chrono::milliseconds(250), this)) {
    header->setObjectName(QStringLiteral("volumesHeader"));
    grant->setObjectName(QStringLiteral("grantButton"));
    header->setFont(uiFont(11, QFont::DemiBold));
    setTextColor(header, secondaryTextColor());
    grant->setFont(uiFont(10));
    connect(grant, &QPushButton::clicked, this, &VolumesPanel::openPermissionSettings);
    // Only where the desktop has a settings program for what applications may reach.
    grant->setVisible(appPermissionsSettings().has_value());

    auto* top = new QHBoxLayout;
    top->setContentsMargins(0, 0, 0, 0);
    top->setSpacing(8);
    top->addWidget(header, 0, Qt::AlignVCenter);
    top->addStretch(1);
    top->addWidget(grant, 0, Qt::AlignVCenter);

    auto* list = new QVBoxLayout(rowList);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(5);

    auto* panel = new QVBoxLayout(this);
    panel->setContentsMargins(0, 0, 0, 0);
    panel->setSpacing(7);
    // Many volumes scroll within the panel rather than squeeze the outline above it.
    scroller->setWidget(rowList);
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->viewport()->setAutoFillBackground(false);
    rowList->setAutoFillBackground(false);
    panel->addLayout(top);
    panel->addWidget(scroller);
    fitRows();

    connect(reader, &VolumeReader::volumesRead, this, &VolumesPanel::showRows);
    // A child of the panel: mount events reach it for as long as the panel lives.
    auto* monitor = new MountMonitor(this);
    connect(monitor, &MountMonitor::changed, this, &VolumesPanel::refresh);
    retranslate();
    refresh();
}

void VolumesPanel::retranslate() {
    header->setText(t(QStringLiteral("vol_header")));
    grant->setText(t(QStringLiteral("vol_grant")));
}

void VolumesPanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
        refresh();
    }
}

void VolumesPanel::refresh() {
    reader->read();
}

void VolumesPanel::showRows(const QList<VolumeInfo>& volumes) {
    QLayout* list = rowList->layout();
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
    fitRows();
}

void VolumesPanel::fitRows() {
    // From the rows' own size hints: rows just added are not shown yet, and the layout
    // leaves out what is not shown.
    QLayout* list = rowList->layout();
    const int shown = std::min(list->count(), kRowsShownAtMost);
    int height = 0;
    for (int row = 0; row < shown; ++row)
        height +=
            (row > 0 ? list->spacing() : 0) + list->itemAt(row)->widget()->sizeHint().height();
    // A part of the next row shows that there are more.
    if (list->count() > kRowsShownAtMost)
        height +=
            list->spacing() + list->itemAt(kRowsShownAtMost)->widget()->sizeHint().height() / 2;
    scroller->setFixedHeight(height);
}

void VolumesPanel::openPermissionSettings() {
    if (const auto settings = appPermissionsSettings())
        QProcess::startDetached(settings->program, settings->arguments);
}
