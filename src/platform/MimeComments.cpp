// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/MimeComments.h"

#include <QFile>
#include <QStandardPaths>
#include <QXmlStreamReader>

QHash<QString, QString> mimeComments(const QString& mimeType) {
    QHash<QString, QString> comments;
    if (mimeType.isEmpty() || mimeType.contains(QLatin1String("..")))
        return comments;
    QFile file(QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                                      QStringLiteral("mime/") + mimeType + QStringLiteral(".xml")));
    if (!file.open(QIODevice::ReadOnly))
        return comments;
    QXmlStreamReader xml(&file);
    // The comments are the type element's own children.
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("mime-type"))
        return comments;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("comment")) {
            const QString lang = xml.attributes().value(QLatin1String("xml:lang")).toString();
            comments.insert(lang, xml.readElementText());
        } else {
            xml.skipCurrentElement();
        }
    }
    return comments;
}
