// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FileClipboard.h"

#include "platform/FileUrl.h"

#include <QMimeData>

namespace {

class FileMimeData : public QMimeData {
public:
    explicit FileMimeData(const QList<QByteArray>& paths) : copiedFiles("copy") {
        for (const QByteArray& path : paths) {
            const QByteArray uri = fileUrlFromPathBytes(path).toEncoded();
            uriList += uri + "\r\n";
            copiedFiles += '\n' + uri;
            if (!pathLines.isEmpty())
                pathLines += '\n';
            pathLines += path;
        }
    }

    QStringList formats() const override {
        return {QLatin1String(kUriListType), QLatin1String(kGnomeCopiedFilesType),
                QLatin1String(kPlainTextType)};
    }
    bool hasFormat(const QString& mimeType) const override { return formats().contains(mimeType); }

protected:
    // Qt asks for a URI list as a list of URLs when it wants to make text of it, and
    // for text as a string; each format answers with exactly its own content.
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override {
        if (mimeType == QLatin1String(kPlainTextType))
            return type.id() == QMetaType::QString ? QVariant(QString::fromUtf8(pathLines))
                                                   : QVariant(pathLines);
        if (type.id() != QMetaType::QByteArray)
            return {};
        if (mimeType == QLatin1String(kUriListType))
            return uriList;
        if (mimeType == QLatin1String(kGnomeCopiedFilesType))
            return copiedFiles;
        return {};
    }

private:
    QByteArray uriList;
    QByteArray copiedFiles;
    QByteArray pathLines;
};

} // namespace

std::unique_ptr<QMimeData> fileCopyMimeData(const QList<QByteArray>& paths) {
    return std::make_unique<FileMimeData>(paths);
}
