// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/TintedIcon.h"

#include <QPainter>
#include <QSvgRenderer>

QPixmap tintedSvgPixmap(const QString& resource, QSize size, const QColor& color, qreal dpr) {
    QPixmap pixmap(size * dpr);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(resource);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    // Keep the drawing's shape and coverage, replace its colour.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    painter.end();
    pixmap.setDevicePixelRatio(dpr);
    return pixmap;
}

QIcon tintedSvgIcon(const QString& resource, QSize size, const QColor& color) {
    QIcon icon;
    for (qreal dpr : {1.0, 2.0, 3.0})
        icon.addPixmap(tintedSvgPixmap(resource, size, color, dpr));
    return icon;
}
