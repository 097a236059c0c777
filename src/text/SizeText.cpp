// SPDX-License-Identifier: GPL-2.0-or-later
#include "text/SizeText.h"

#include "text/Lang.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// printf's rounding (round-half-even on the binary value) is part of the expected text.
QString printfText(const char* format, double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return QString::fromLatin1(buffer);
}

} // namespace

QString humanSize(qint64 bytes) {
    if (bytes < 0)
        return t(QStringLiteral("calculating"));
    if (bytes < 1024)
        return QString::number(bytes) + QStringLiteral(" B");
    static const char* const units[] = {"B", "KB", "MB", "GB", "TB", "PB"};
    double value = double(bytes) / 1024.0;
    int unit = 1;
    while (value >= 1024.0 && unit < 5) {
        value /= 1024.0;
        ++unit;
    }
    return printfText("%.1f", value) + u' ' + QLatin1String(units[unit]);
}

QString barString(double fraction) {
    // A non-finite share has no caller; it draws an empty bar rather than misbehave.
    const double cells = std::isfinite(fraction) ? std::round(fraction * 10.0) : 0.0;
    const int filled = int(std::clamp(cells, 0.0, 10.0));
    QString text(filled, QChar(0x2588));
    text += QString(10 - filled, QChar(0x2591));
    return text + printfText(" %3.0f%%", fraction * 100.0);
}

QString gbStr(qint64 bytes) {
    const double gigabytes = double(bytes) / 1e9;
    return printfText(gigabytes < 100.0 ? "%.1f" : "%.0f", gigabytes);
}
