// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>

// "  ·  ": two spaces, a middle dot, two spaces.
QString statusSeparator();

// While the opened folder is walked: its path, the entries walked and the size found so
// far ("Measuring…  %d items  ·  %@ so far"), and when the folder is a volume's top,
// that size's share of the volume's used space.
QString progressStatusLine(const QByteArray& path, quint64 items, qint64 bytes,
                           std::optional<int> percentOfVolume);

// After a stop: "Stopped  ·  %d items  ·  %@ so far".
QString stoppedStatusLine(const QByteArray& path, quint64 items, qint64 bytes);

// A measured folder: its path, the number of its own entries and its total ("%d items
// ·  Total %@", the total "Calculating…" while unknown), and the time its walk ended
// ("measured at %@") when given.
QString countedStatusLine(const QByteArray& path, qint64 count, qint64 total,
                          const QDateTime& measuredAt = {});
