// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/CapacityText.h"

#include "text/Lang.h"
#include "text/SizeText.h"
#include "ui/Style.h"

AttributedText capAttr(qint64 freeBytes, qint64 totalBytes) {
    return {
        {t(QStringLiteral("vol_free")) + u' ' + gbStr(freeBytes) + QStringLiteral(" GB"),
         accentColor(), QFont::DemiBold},
        {QStringLiteral("  /  ") + t(QStringLiteral("vol_total")) + u' ' + gbStr(totalBytes) +
             QStringLiteral(" GB"),
         secondaryTextColor(), QFont::Normal},
    };
}
