// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/SizeIndex.h"
#include "platform/ItemReach.h"

#include <QByteArray>
#include <QString>
#include <memory>

// An item of the tree as an action takes it: where it is, how it is shown, and the
// identity its row was measured with, to reach it by again.
struct ItemRef {
    QByteArray path;
    QString name;
    bool isFolder = false;
    // The opened folder itself.
    bool isRoot = false;
    // Its size as the row shows it.
    qint64 size = -1;
    ItemLocation location;
    // Its entry in the index it was taken from.
    EntryId id = kNoEntry;
    std::weak_ptr<const SizeIndex> index;

    bool isValid() const { return !path.isEmpty(); }
};

// The entry as an item: the root is `root` of the index.
ItemRef itemRefOf(const std::shared_ptr<const SizeIndex>& index, EntryId root, EntryId id);
