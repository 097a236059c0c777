// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/AppIcon.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace {

const QString iconPath = QStringLiteral(":/icons/org.sizeloom.Sizeloom.svg");

} // namespace

QIcon appIcon() {
    return QIcon(iconPath);
}

QPixmap appIconPixmap(int side, qreal devicePixelRatio) {
    QSvgRenderer renderer(iconPath);
    if (!renderer.isValid())
        return QGuiApplication::windowIcon().pixmap(QSize(side, side), devicePixelRatio);
    const int pixels = qRound(side * devicePixelRatio);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}
