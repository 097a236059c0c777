// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/VolumeBar.h"

#include "ui/Style.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {

// The faintest text level, a step below tertiary: the track only hints at the bar.
QColor trackColor() {
    QColor color = tertiaryTextColor();
    color.setAlphaF(0.1f);
    return color;
}

} // namespace

VolumeBar::VolumeBar(QWidget* parent) : QWidget(parent) {
    // The bar takes the row's spare width and, wanting none for itself, is the first
    // to give way.
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void VolumeBar::setFraction(qreal fraction) {
    fraction_ = fraction;
    update();
}

void VolumeBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF bounds = rect();
    const qreal h = bounds.height();
    const qreal r = h * 0.5;
    painter.setBrush(trackColor());
    painter.drawRoundedRect(bounds, r, r);

    const qreal f = std::isfinite(fraction_) ? std::clamp<qreal>(fraction_, 0, 1) : 0;
    const qreal w = bounds.width() * f;
    // A sliver would smear into the track's rounded end; below half a point there is
    // nothing worth showing, and above it the fill is at least a circle.
    if (w <= 0.5)
        return;
    painter.setBrush(accentColor());
    painter.drawRoundedRect(QRectF(0, 0, std::max(w, h), h), r, r);
}
