// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QUrl>

// The path of a file URL in the file system's own bytes: percent-escapes are decoded
// to bytes, so names that are not UTF-8 come through unchanged.
QByteArray localPathBytes(const QUrl& url);

// A file URL for path bytes, every byte that is not plain ASCII percent-escaped.
QUrl fileUrlFromPathBytes(const QByteArray& path);
