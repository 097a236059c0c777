// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/ItemRef.h"

#include "platform/Paths.h"

ItemRef itemRefOf(const std::shared_ptr<const SizeIndex>& index, EntryId root, EntryId id) {
    ItemRef item;
    if (!index || id == kNoEntry)
        return item;
    item.path = index->pathOf(id);
    item.name = displayPath(lastPathComponent(item.path));
    item.isFolder = index->isFolder(id);
    item.isRoot = id == root;
    item.size = index->allocated(id);
    item.id = id;
    item.index = index;
    // Reached from the opened folder, whose identity its walk took.
    ItemLocation& location = item.location;
    location.root = index->pathOf(root);
    location.rootId = {index->device(root), index->ownIno(root)};
    if (id != root) {
        const QByteArray below = index->pathOf(id);
        const qsizetype skip = location.root.size() + (location.root.endsWith('/') ? 0 : 1);
        location.relative = below.mid(skip);
        location.listedIno = index->listedIno(id);
        location.folderDev = index->device(index->parent(id));
    }
    return item;
}
