// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QIcon>
#include <QPixmap>

// The application's own icon, from the SVG built into the program: the window icon.
QIcon appIcon();

// The icon drawn for side x side logical pixels at the given pixel ratio, so it stays
// sharp on dense screens. Falls back to the application's window icon when the SVG
// does not load.
QPixmap appIconPixmap(int side, qreal devicePixelRatio);
