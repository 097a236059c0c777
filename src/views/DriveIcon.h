// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QPixmap>

// The drive symbol of a volume row, 15 x 15 points in the accent colour, drawn for
// the given device pixel ratio so that it stays sharp on dense screens.
QPixmap driveIcon(bool internal, qreal devicePixelRatio);
