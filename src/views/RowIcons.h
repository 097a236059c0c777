// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/FolderListing.h"

#include <QFileIconProvider>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>

// Row icons from what the listing already knows: the kind of item and the type its
// name suggests. Painting a row never asks the file system (a mount that does not
// answer would freeze the window), and each type's icon is looked up once.
class RowIcons {
public:
    // What a folder's row is marked with, over its icon.
    enum class Mark { None, Unreadable, OtherVolume };

    RowIcons();
    QIcon icon(ItemKind kind, const QString& name, Mark mark = Mark::None) const;

private:
    QIcon iconOfType(const QMimeType& type, QFileIconProvider::IconType fallback) const;
    QIcon marked(const QIcon& icon, Mark mark) const;

    QMimeDatabase types;
    QFileIconProvider standard;
    mutable QHash<QString, QIcon> byType;
};
