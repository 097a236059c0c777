// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

// Bytes reported by "du -sk": the first tab-separated field of the output, trimmed of
// spaces and tabs, as a signed 64-bit count of KiB times 1024. Anything else is 0.
qint64 parseDuOutput(const QByteArray& output);

// du echoes its operand after the number. The echo is the caller's own path, not
// part of the measurement, so a path that is not UTF-8 must not void the number.
qint64 duSizeFromOutput(const QByteArray& output, const QByteArray& operand);
