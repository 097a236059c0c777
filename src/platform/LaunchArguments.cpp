// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/LaunchArguments.h"

#include "platform/FileUrl.h"
#include "platform/PathInfo.h"

QByteArray argumentAsPath(const QByteArray& argument) {
    if (!argument.startsWith("file://"))
        return argument;
    return localPathBytes(QUrl::fromEncoded(argument));
}

QStringList urisForArguments(const QList<QByteArray>& arguments) {
    QStringList uris;
    for (const QByteArray& argument : arguments) {
        const QByteArray path = argumentAsPath(argument);
        if (!path.isEmpty())
            uris << fileUrlFromPathBytes(absolutePath(path)).toString(QUrl::FullyEncoded);
    }
    return uris;
}
