// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/PreviewContent.h"

#include "platform/ItemFacts.h"
#include "platform/MimeComments.h"
#include "platform/SafeRead.h"

#include <QFile>
#include <QImageReader>
#include <QMimeDatabase>
#include <QStringDecoder>

namespace {

QImage readImage(QFile& file, const QSize& fit) {
    if (file.size() > kPreviewImageFileBytes)
        return {};
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return {};
    const QSize full = reader.size();
    // Formats that can decode at a smaller size (JPEG) do so; the rest decode whole,
    // within the reader's allocation limit, and are scaled afterwards.
    if (full.isValid() && (full.width() > fit.width() || full.height() > fit.height()) &&
        reader.supportsOption(QImageIOHandler::ScaledSize))
        reader.setScaledSize(full.scaled(fit, Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (image.isNull())
        return {};
    if (image.width() > fit.width() || image.height() > fit.height())
        image = image.scaled(fit, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

} // namespace

bool looksLikeText(const QByteArray& start) {
    if (start.isEmpty() || start.contains('\0'))
        return false;
    // A decoder keeps an unfinished character as state, not as an error.
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString decoded = utf8(start);
    return !decoded.isEmpty() && !utf8.hasError();
}

PreviewContent loadPreview(const QByteArray& path, const QSize& fit) {
    PreviewContent content;
    // The type decides what is shown: a PDF made of plain ASCII is still a PDF.
    content.mimeType = readItemFacts(path).mimeType;
    content.typeNames = mimeComments(content.mimeType);
    const QMimeType type = QMimeDatabase().mimeTypeForName(content.mimeType);
    const bool image = content.mimeType.startsWith(QLatin1String("image/"));
    const bool text = type.inherits(QStringLiteral("text/plain"));
    if (!image && !text)
        return content;
    const int fd = openRegularFile(path);
    QFile file;
    if (fd < 0 || !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return content;
    if (image) {
        content.image = readImage(file, fit);
        if (!content.image.isNull())
            content.kind = PreviewContent::Kind::Image;
        return content;
    }
    const QByteArray start = file.read(kPreviewTextBytes);
    if (looksLikeText(start)) {
        content.kind = PreviewContent::Kind::Text;
        QStringDecoder utf8(QStringDecoder::Utf8);
        content.text = utf8(start);
    }
    return content;
}
