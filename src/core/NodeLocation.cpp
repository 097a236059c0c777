// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/NodeLocation.h"

ItemLocation locationOf(const Node& node) {
    const Node* top = &node;
    while (const NodePtr above = top->parent.lock())
        top = above.get();
    ItemLocation location;
    location.root = top->url;
    location.rootId = top->ownId;
    if (top == &node)
        return location;
    const qsizetype skip = top->url.size() + (top->url.endsWith('/') ? 0 : 1);
    location.relative = node.url.mid(skip);
    location.listedIno = node.listedIno;
    if (const NodePtr folder = node.parent.lock())
        location.folderDev = folder->ownId.dev;
    return location;
}
