// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/ItemNaming.h"

#include "actions/NameEditing.h"

NameParts splitExtension(const QByteArray& name) {
    const qsizetype dot = name.lastIndexOf('.');
    if (dot <= 0 || dot == name.size() - 1)
        return {name, {}};
    return {name.left(dot), name.mid(dot + 1)};
}

QByteArray cutToFit(const QByteArray& bytes, qsizetype limit) {
    if (bytes.size() <= limit)
        return bytes;
    qsizetype length = std::max<qsizetype>(limit, 0);
    // Not inside a UTF-8 sequence: continuation bytes are 10xxxxxx.
    while (length > 0 && (uchar(bytes[length]) & 0xC0) == 0x80)
        --length;
    return bytes.left(length);
}

namespace {

// The base, cut so that base and ending make a name the file system takes.
QByteArray withEnding(const QByteArray& base, const QByteArray& ending) {
    return cutToFit(base, kNameMax - ending.size()) + ending;
}

} // namespace

QByteArray duplicateName(const QByteArray& name, int n) {
    NameParts parts = splitExtension(name);
    QByteArray ending = " copy";
    if (n >= 2)
        ending += ' ' + QByteArray::number(n);
    // An extension too long to keep beside a base is part of the base.
    if (!parts.extension.isEmpty() && ending.size() + 1 + parts.extension.size() < kNameMax / 2)
        ending += '.' + parts.extension;
    else
        parts.base = name;
    return withEnding(parts.base, ending);
}

QByteArray archiveName(const QByteArray& name, int n) {
    QByteArray ending = n >= 2 ? ' ' + QByteArray::number(n) : QByteArray();
    return withEnding(splitExtension(name).base, ending + ".zip");
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

RenameRequest renameRequest(const QString& typed, const QByteArray& oldName) {
    const QString name = trimHorizontalSpace(typed);
    if (name.isEmpty() || name.normalized(QString::NormalizationForm_C) ==
                              editableName(oldName).normalized(QString::NormalizationForm_C))
        return {};
    if (name.contains(u'/') || name.contains(QChar(0)) || name == u"." || name == u"..")
        return {RenameRequest::Invalid, {}};
    const QByteArray bytes = nameFromEdit(oldName, name);
    if (bytes == oldName)
        return {};
    return {RenameRequest::Rename, bytes};
}
