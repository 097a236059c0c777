// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QFileIconProvider>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>

class Node;

// Row icons from what the listing already knows: the kind of item and the type its
// name suggests. Painting a row never asks the file system (a mount that does not
// answer would freeze the window), and each type's icon is looked up once.
class RowIcons {
public:
    RowIcons();
    QIcon icon(const Node& node) const;

private:
    QIcon iconOfType(const QMimeType& type, QFileIconProvider::IconType fallback) const;

    QMimeDatabase types;
    QFileIconProvider standard;
    mutable QHash<QString, QIcon> byType;
};
