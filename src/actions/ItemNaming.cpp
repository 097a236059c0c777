#include "actions/ItemNaming.h"

NameParts splitExtension(const QByteArray& name) {
    const qsizetype dot = name.lastIndexOf('.');
    if (dot <= 0 || dot == name.size() - 1)
        return {name, {}};
    return {name.left(dot), name.mid(dot + 1)};
}

QByteArray duplicateName(const QByteArray& name, int n) {
    const NameParts parts = splitExtension(name);
    QByteArray result = parts.base + " copy";
    if (n >= 2)
        result += ' ' + QByteArray::number(n);
    if (!parts.extension.isEmpty())
        result += '.' + parts.extension;
    return result;
}

QByteArray archiveName(const QByteArray& name, int n) {
    QByteArray result = splitExtension(name).base;
    if (n >= 2)
        result += ' ' + QByteArray::number(n);
    return result + ".zip";
}

QByteArray firstFreeName(const std::function<QByteArray(int)>& candidate,
                         const std::function<bool(const QByteArray&)>& taken) {
    for (int n = 1;; ++n) {
        QByteArray name = candidate(n);
        if (!taken(name))
            return name;
    }
}

namespace {

bool isHorizontalSpace(QChar c) {
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

} // namespace

QString trimHorizontalSpace(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isHorizontalSpace(text.at(begin)))
        ++begin;
    while (end > begin && isHorizontalSpace(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

RenameRequest renameRequest(const QString& typed, const QString& oldName) {
    const QString name = trimHorizontalSpace(typed);
    if (name.isEmpty() || name.normalized(QString::NormalizationForm_C) ==
                              oldName.normalized(QString::NormalizationForm_C))
        return {};
    if (name.contains(u'/') || name.contains(QChar(0)) || name == u"." || name == u"..")
        return {RenameRequest::Invalid, {}};
    return {RenameRequest::Rename, name.toUtf8()};
}
