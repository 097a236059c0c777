// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

// A byte count in binary units ("1.5 KB"); a negative count is not known yet and
// reads as the translation of "calculating".
QString humanSize(qint64 bytes);

// A share (1.0 = the whole) as ten cells of "█"/"░" and a right-aligned percentage.
QString barString(double fraction);

// A byte count as a bare number of decimal gigabytes, for the volumes panel.
QString gbStr(qint64 bytes);
