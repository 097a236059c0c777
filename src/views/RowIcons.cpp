// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/RowIcons.h"

#include <QPainter>
#include <algorithm>

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
    // The folder's icon with a badge drawn in its lower right corner, the same in every
    // icon theme and legible on light and dark rows: a red disc with a white bar ("no
    // entry") for what could not be read, a blue disc with a white drive for another
    // volume. Shape and colour both differ, so neither depends on telling red from blue.
    QIcon result;
    for (const int side : {16, 32, 64}) {
        QPixmap pixmap = icon.pixmap(side, side);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const qreal badge = side * 0.56;
        const QRectF disc(side - badge, side - badge, badge, badge);
        painter.setPen(QPen(Qt::white, std::max(1.0, side / 16.0)));
        painter.setBrush(mark == Mark::Unreadable ? QColor(0xc6, 0x28, 0x28)
                                                  : QColor(0x1f, 0x5f, 0xbf));
        painter.drawEllipse(disc.adjusted(0.5, 0.5, -0.5, -0.5));
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::white);
        const QPointF centre = disc.center();
        if (mark == Mark::Unreadable) {
            painter.drawRect(QRectF(centre.x() - badge * 0.3, centre.y() - badge * 0.09,
                                    badge * 0.6, badge * 0.18));
        } else {
            const QRectF drive(centre.x() - badge * 0.3, centre.y() - badge * 0.16, badge * 0.6,
                               badge * 0.32);
            painter.drawRoundedRect(drive, badge * 0.06, badge * 0.06);
            painter.setBrush(QColor(0x1f, 0x5f, 0xbf));
            painter.drawEllipse(QPointF(drive.right() - badge * 0.1, drive.center().y()),
                                badge * 0.05, badge * 0.05);
        }
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
