// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/StatusLine.h"

#include "platform/Paths.h"
#include "text/Lang.h"
#include "text/LangLocale.h"
#include "text/SizeText.h"

QString statusSeparator() {
    return QStringLiteral("  \u00b7  ");
}

QString progressStatusLine(const QByteArray& path, quint64 items, qint64 bytes,
                           std::optional<int> percentOfVolume) {
    const QStringList filled{QString::number(items), humanSize(bytes),
                             QString::number(percentOfVolume.value_or(0))};
    return displayPath(path) + statusSeparator() +
           tf(percentOfVolume ? QStringLiteral("status_progress_share")
                              : QStringLiteral("status_progress"),
              filled);
}

QString stoppedStatusLine(const QByteArray& path, quint64 items, qint64 bytes) {
    return displayPath(path) + statusSeparator() +
           tf(QStringLiteral("status_stopped"), {QString::number(items), humanSize(bytes)});
}

QString countedStatusLine(const QByteArray& path, qint64 count, qint64 total,
                          const QDateTime& measuredAt) {
    QString line = displayPath(path) + statusSeparator() +
                   tf(QStringLiteral("items_total"), {QString::number(count), humanSize(total)});
    if (measuredAt.isValid())
        line += statusSeparator() +
                tf(QStringLiteral("status_measured_at"),
                   {localeFor(Loc::current).toString(measuredAt.time(), QLocale::ShortFormat)});
    return line;
}
