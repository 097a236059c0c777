// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/AttributedText.h"

QString richText(const AttributedText& runs) {
    QString html;
    for (const TextRun& run : runs)
        html +=
            QStringLiteral("<span style=\"white-space:pre; color:%1; font-weight:%2\">%3</span>")
                .arg(run.color.name(QColor::HexArgb))
                .arg(int(run.weight))
                .arg(run.text.toHtmlEscaped());
    return html;
}
