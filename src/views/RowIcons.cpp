// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/RowIcons.h"

#include <QPainter>

RowIcons::RowIcons() {
    // The icon theme and the type database are read on first use, which takes a
    // while: better while the window is being built than on an opened folder's first
    // paint.
    icon(ItemKind::Folder, QStringLiteral("/"));
    icon(ItemKind::File, QStringLiteral("a.txt"));
}

QIcon RowIcons::icon(ItemKind kind, const QString& name, Mark mark) const {
    switch (kind) {
    case ItemKind::Folder:
        return marked(iconOfType(types.mimeTypeForName(QStringLiteral("inode/directory")),
                                 QFileIconProvider::Folder),
                      mark);
    case ItemKind::Link:
        return iconOfType(types.mimeTypeForName(QStringLiteral("inode/symlink")),
                          QFileIconProvider::File);
    case ItemKind::Other:
        return standard.icon(QFileIconProvider::File);
    case ItemKind::File:
        break;
    }
    // By the name alone: the contents are not read.
    return iconOfType(types.mimeTypeForFile(name, QMimeDatabase::MatchExtension),
                      QFileIconProvider::File);
}

QIcon RowIcons::marked(const QIcon& icon, Mark mark) const {
    if (mark == Mark::None)
        return icon;
    const QString key =
        mark == Mark::Unreadable ? QStringLiteral("|unreadable") : QStringLiteral("|volume");
    if (const auto cached = byType.constFind(key); cached != byType.constEnd())
        return *cached;
    // The folder's icon with a small emblem in its lower right corner: a stop sign for
    // what could not be read, a drive for another volume.
    const QIcon emblem =
        QIcon::fromTheme(mark == Mark::Unreadable ? QStringLiteral("emblem-unreadable")
                                                  : QStringLiteral("drive-harddisk"),
                         standard.icon(mark == Mark::Unreadable ? QFileIconProvider::Trashcan
                                                                : QFileIconProvider::Drive));
    QIcon result;
    for (const int side : {16, 32}) {
        QPixmap pixmap = icon.pixmap(side, side);
        QPainter painter(&pixmap);
        const int small = side * 5 / 8;
        painter.drawPixmap(side - small, side - small, emblem.pixmap(small, small));
        painter.end();
        result.addPixmap(pixmap);
    }
    byType.insert(key, result);
    return result;
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
