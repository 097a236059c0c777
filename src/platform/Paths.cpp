// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/Paths.h"

namespace {

// "/a/b/" and "/a/b" name the same folder; only the root keeps its slash.
QByteArray withoutTrailingSlashes(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

} // namespace

QByteArray childPath(const QByteArray& folder, const QByteArray& name) {
    // Sized exactly: a node keeps its path for as long as it is in the tree, and
    // appending would leave room to grow in every one of them.
    const bool slash = !folder.endsWith('/');
    QByteArray path;
    path.reserve(folder.size() + qsizetype(slash) + name.size());
    path.append(folder);
    if (slash)
        path.append('/');
    return path.append(name);
}

QByteArray lastPathComponent(const QByteArray& path) {
    const QByteArray clean = withoutTrailingSlashes(path);
    const qsizetype slash = clean.lastIndexOf('/');
    const QByteArray last = slash < 0 ? clean : clean.mid(slash + 1);
    return last.isEmpty() ? clean : last;
}

QByteArray deletingLastPathComponent(const QByteArray& path) {
    const QByteArray clean = withoutTrailingSlashes(path);
    const qsizetype slash = clean.lastIndexOf('/');
    if (slash < 0)
        return clean == ".." ? QByteArray("../..") : QByteArray(".");
    if (slash == 0)
        return "/";
    return clean.left(slash);
}

QString displayPath(const QByteArray& path) {
    return QString::fromUtf8(path);
}
