// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QSize>
#include <QString>

// What the preview window shows of an item.
struct PreviewContent {
    enum class Kind { Image, Text, Summary };
    Kind kind = Kind::Summary;
    // An image, already scaled to fit.
    QImage image;
    // The start of a text file.
    QString text;
    // The item's MIME type and its descriptions by language tag (see mimeComments).
    QString mimeType;
    QHash<QString, QString> typeNames;
};

// Reads what the preview shows, on a worker. The item's type decides: an image is
// decoded up to a size cap and scaled to fit into fit, a text shows its start, anything
// else only its type, for a summary. Only a regular file is opened (never a FIFO,
// device or socket, nor through a symbolic link).
PreviewContent loadPreview(const QByteArray& path, const QSize& fit);

// Bytes that read as the start of a text: UTF-8 (a character cut off at the end is
// fine) without NUL bytes, and not empty.
bool looksLikeText(const QByteArray& start);

// How much of a text file the preview shows.
inline constexpr qint64 kPreviewTextBytes = 64 * 1024;
// Larger image files are not decoded for a preview.
inline constexpr qint64 kPreviewImageFileBytes = 256LL * 1024 * 1024;
