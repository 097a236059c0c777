// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

// The share cell: a size over its folder's total as a bar and percentage; empty for an
// unknown size or a total below one byte.
QString shareText(qint64 size, qint64 total);
