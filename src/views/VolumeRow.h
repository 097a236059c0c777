// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QtGlobal>

class QString;
class QWidget;

// One volume's row of the volumes panel: drive symbol, name, capacity bar and the
// free-of-total text. The caller owns the row.
QWidget* makeVolumeRow(const QString& name, qint64 freeBytes, qint64 totalBytes, bool internal);

// The row of a volume that has not told its capacity: an empty bar and no figures.
QWidget* makeSilentVolumeRow(const QString& name, bool internal);
