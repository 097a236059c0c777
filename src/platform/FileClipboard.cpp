#include "platform/FileClipboard.h"

#include "platform/FileUrl.h"

#include <QMimeData>

namespace {

class FileOnlyMimeData : public QMimeData {
public:
    explicit FileOnlyMimeData(const QByteArray& uri)
        : uriList(uri + "\r\n"), copiedFiles("copy\n" + uri) {}

    QStringList formats() const override {
        return {QLatin1String(kUriListType), QLatin1String(kGnomeCopiedFilesType)};
    }
    bool hasFormat(const QString& mimeType) const override { return formats().contains(mimeType); }

protected:
    // Qt asks for the URI list as a list of URLs when it wants to make text of it;
    // only a request for the bytes themselves is answered.
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override {
        if (type.id() != QMetaType::QByteArray)
            return {};
        if (mimeType == QLatin1String(kUriListType))
            return uriList;
        if (mimeType == QLatin1String(kGnomeCopiedFilesType))
            return copiedFiles;
        return {};
    }

private:
    const QByteArray uriList;
    const QByteArray copiedFiles;
};

} // namespace

std::unique_ptr<QMimeData> fileCopyMimeData(const QByteArray& path) {
    return std::make_unique<FileOnlyMimeData>(fileUrlFromPathBytes(path).toEncoded());
}
