#include "platform/FileUris.h"

#include "core/PathInfo.h"

namespace {

bool isFileUri(const QByteArray& text) {
    return text.startsWith("file://");
}

} // namespace

QString fileUriForPath(const QByteArray& absolutePath) {
    return QStringLiteral("file://") + QString::fromLatin1(absolutePath.toPercentEncoding("/"));
}

QByteArray pathForFileUrl(const QUrl& url) {
    if (!url.isLocalFile())
        return {};
    // The encoded form still holds the original bytes; the decoded one is UTF-16 text.
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
}

QByteArray argumentAsPath(const QByteArray& argument) {
    if (!isFileUri(argument))
        return argument;
    return pathForFileUrl(QUrl::fromEncoded(argument));
}

QStringList urisForArguments(const QList<QByteArray>& arguments) {
    QStringList uris;
    for (const QByteArray& argument : arguments) {
        const QByteArray path = argumentAsPath(argument);
        if (!path.isEmpty())
            uris << fileUriForPath(absolutePath(path));
    }
    return uris;
}
