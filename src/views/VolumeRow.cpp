// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/VolumeRow.h"

#include "ui/PlainText.h"
#include "ui/UiFont.h"
#include "views/CapacityText.h"
#include "views/DriveIcon.h"
#include "views/VolumeBar.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>

namespace {

QLabel* iconView(bool internal) {
    QLabel* icon = makePlainLabel();
    // Drawn for the densest screen, so it is sharp wherever the window goes.
    icon->setPixmap(driveIcon(internal, qGuiApp->devicePixelRatio()));
    icon->setFixedSize(15, 15);
    return icon;
}

QLabel* nameView(const QString& name) {
    constexpr int width = 130;
    // A label of the file system's own: whatever bytes it holds are shown as they are.
    QLabel* label = makePlainLabel();
    label->setFont(uiFont(11));
    label->setFixedWidth(width);
    label->setText(label->fontMetrics().elidedText(name, Qt::ElideRight, width));
    return label;
}

VolumeBar* barView(qint64 freeBytes, qint64 totalBytes) {
    auto* bar = new VolumeBar;
    bar->setFraction(totalBytes >= 1 ? double(freeBytes) / double(totalBytes) : 0.0);
    bar->setFixedHeight(7);
    return bar;
}

QLabel* capacityView(qint64 freeBytes, qint64 totalBytes) {
    // Our own runs as rich text; nothing from the disk is in them.
    auto* label = new QLabel;
    label->setFont(uiFont(11));
    label->setTextFormat(Qt::RichText);
    label->setText(richText(capAttr(freeBytes, totalBytes)));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setFixedWidth(200);
    return label;
}

QWidget* rowOf(QWidget* icon, QWidget* name, QWidget* bar, QWidget* capacity) {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(icon, 0, Qt::AlignVCenter);
    layout->addWidget(name, 0, Qt::AlignVCenter);
    layout->addWidget(bar, 1, Qt::AlignVCenter);
    layout->addWidget(capacity, 0, Qt::AlignVCenter);
    return row;
}

} // namespace

QWidget* makeVolumeRow(const QString& name, qint64 freeBytes, qint64 totalBytes, bool internal) {
    return rowOf(iconView(internal), nameView(name), barView(freeBytes, totalBytes),
                 capacityView(freeBytes, totalBytes));
}

QWidget* makeSilentVolumeRow(const QString& name, bool internal) {
    QLabel* capacity = makePlainLabel();
    capacity->setFixedWidth(200);
    return rowOf(iconView(internal), nameView(name), barView(0, 0), capacity);
}
