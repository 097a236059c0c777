// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FileUrl.h"

QByteArray localPathBytes(const QUrl& url) {
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
}

QUrl fileUrlFromPathBytes(const QByteArray& path) {
    return QUrl(QStringLiteral("file://") + QString::fromLatin1(path.toPercentEncoding("/")),
                QUrl::StrictMode);
}
