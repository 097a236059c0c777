// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/DriveIcon.h"

#include "ui/Style.h"
#include "ui/TintedIcon.h"

QPixmap driveIcon(bool internal, qreal devicePixelRatio) {
    return tintedSvgPixmap(internal ? QStringLiteral(":/volumes/internal-drive.svg")
                                    : QStringLiteral(":/volumes/external-drive.svg"),
                           {15, 15}, accentColor(), devicePixelRatio);
}
