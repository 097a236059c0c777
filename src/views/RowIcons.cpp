// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/RowIcons.h"

#include "core/Node.h"

RowIcons::RowIcons() {
    // The icon theme and the type database are read on first use, which takes a
    // while: better while the window is being built than on an opened folder's first
    // paint.
    icon(Node("/", true, {}, ItemKind::Folder));
    icon(Node("/a.txt", false, {}, ItemKind::File));
}

QIcon RowIcons::icon(const Node& node) const {
    switch (node.kind) {
    case ItemKind::Folder:
        return iconOfType(types.mimeTypeForName(QStringLiteral("inode/directory")),
                          QFileIconProvider::Folder);
    case ItemKind::Link:
        return iconOfType(types.mimeTypeForName(QStringLiteral("inode/symlink")),
                          QFileIconProvider::File);
    case ItemKind::Other:
        return standard.icon(QFileIconProvider::File);
    case ItemKind::File:
        break;
    }
    // By the name alone: the contents are not read.
    return iconOfType(types.mimeTypeForFile(node.name(), QMimeDatabase::MatchExtension),
                      QFileIconProvider::File);
}

QIcon RowIcons::iconOfType(const QMimeType& type, QFileIconProvider::IconType fallback) const {
    const QString key = type.name() + u'|' + QString::number(int(fallback));
    if (const auto cached = byType.constFind(key); cached != byType.constEnd())
        return *cached;
    QIcon icon = QIcon::fromTheme(type.iconName());
    if (icon.isNull())
        icon = QIcon::fromTheme(type.genericIconName());
    if (icon.isNull())
        icon = standard.icon(fallback);
    byType.insert(key, icon);
    return icon;
}
