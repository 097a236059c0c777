// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/ShareText.h"

#include "text/SizeText.h"

QString shareText(qint64 size, qint64 total) {
    if (size < 0 || total < 1)
        return {};
    return barString(double(size) / double(total));
}
