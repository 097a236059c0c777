// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

// A one-colour SVG from the resources painted in color, rendered at the device pixel
// ratio so that it stays sharp on HiDPI screens.
QPixmap tintedSvgPixmap(const QString& resource, QSize size, const QColor& color, qreal dpr);
// The same as an icon with pixmaps for 1x, 2x and 3x screens.
QIcon tintedSvgIcon(const QString& resource, QSize size, const QColor& color);
