// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/DuOutput.h"

#include <QStringDecoder>
#include <QStringList>
#include <limits>

namespace {

bool isBlank(QChar c) {
    return c == u' ' || c == u'\t';
}

// Optional sign, then one or more digits and nothing else, within 64 bits.
bool parseStrictInt64(QStringView text, qint64& out) {
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    if (i == text.size())
        return false;
    // Accumulate as a negative number so that INT64_MIN fits.
    qint64 value = 0;
    constexpr qint64 min = std::numeric_limits<qint64>::min();
    for (; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return false;
        const int digit = c - u'0';
        if (value < (min + digit) / 10)
            return false;
        value = value * 10 - digit;
    }
    if (!negative) {
        if (value == min)
            return false;
        value = -value;
    }
    out = value;
    return true;
}

} // namespace

qint64 parseDuOutput(const QByteArray& output) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(output);
    if (decoder.hasError())
        return 0;
    const QStringList pieces = text.split(u'\t', Qt::SkipEmptyParts);
    if (pieces.isEmpty())
        return 0;
    QStringView first = pieces.first();
    while (!first.isEmpty() && isBlank(first.front()))
        first = first.sliced(1);
    while (!first.isEmpty() && isBlank(first.back()))
        first.chop(1);
    qint64 kib = 0;
    if (first.isEmpty() || !parseStrictInt64(first, kib))
        return 0;
    // No real output comes near this; an overflowing count is treated as a failure.
    constexpr qint64 limit = std::numeric_limits<qint64>::max() / 1024;
    if (kib > limit || kib < -limit)
        return 0;
    return kib * 1024;
}

qint64 duSizeFromOutput(const QByteArray& output, const QByteArray& operand) {
    const QByteArray echo = '\t' + operand + '\n';
    if (output.endsWith(echo))
        return parseDuOutput(output.left(output.size() - echo.size() + 1));
    return parseDuOutput(output);
}
