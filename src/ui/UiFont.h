// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QFont>

// Fonts sized in logical pixels, the unit the window's layout is measured in, so
// that text and spacing keep their proportions whatever the desktop's DPI setting.
QFont uiFont(qreal size, QFont::Weight weight = QFont::Normal);
QFont monoFont(qreal size);
