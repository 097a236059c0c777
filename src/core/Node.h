// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/FileId.h"
#include "platform/FolderListing.h"
#include "platform/Paths.h"

#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

class Node;
using NodePtr = std::shared_ptr<Node>;
using NodeList = std::vector<NodePtr>;

// One file-system item of the size tree. The tree is owned from the top:
// a folder holds its children strongly and each child points back weakly,
// so queued work can keep a node alive after its tree has been dropped.
// Only the main thread writes the mutable fields.
class Node {
public:
    Node(QByteArray url, bool isDir, const NodePtr& parent = {},
         std::optional<ItemKind> kind = std::nullopt);

    static NodePtr make(QByteArray url, bool isDir, const NodePtr& parent = {},
                        std::optional<ItemKind> kind = std::nullopt) {
        return std::make_shared<Node>(std::move(url), isDir, parent, kind);
    }

    // Absolute path in the file system's own bytes; never converted, so a name
    // that is not valid UTF-8 still reaches du, rename and the archive intact.
    const QByteArray url;
    const bool isDir;
    // A folder or a file unless the listing said otherwise.
    const ItemKind kind;
    // Child folders still being measured, plus one while the listing runs.
    int pending = 0;
    // Where the node is in its folder's children; kept up to date as they are sorted.
    int indexInParent = 0;
    // The inode number its folder's listing gave it (none for the opened folder), and a
    // listed folder's own identity: what an action checks the item against.
    quint64 listedIno = 0;
    FileId ownId;

    std::weak_ptr<Node> parent;
    // Absent: not listed (or listing discarded). Empty: listed and empty. A pointer,
    // not an optional: most nodes are files, and a large folder holds many of them.
    std::unique_ptr<NodeList> children;

    // Bytes on disk; negative while not measured yet.
    qint64 size() const { return bytes; }
    // Also keeps the folder's sum of its children's sizes up to date.
    void setSize(qint64 size);
    // The sum of the children's sizes, unmeasured ones counted as 0: what a row's share
    // is taken of while its folder's own size is not known. Kept as sizes arrive, since
    // a level of 100,000 rows would otherwise be summed once per painted row.
    qint64 childrenTotal() const { return sizedChildrenTotal; }
    // Forgets the listing: no children, and none of their sizes.
    void dropChildren();

    // Display name, made when shown rather than kept: invalid bytes become
    // replacement characters here only.
    QString name() const;

private:
    qint64 bytes = -1;
    qint64 sizedChildrenTotal = 0;
};

// Puts a level in the outline's order: largest first, equal sizes in the order they
// were listed; each node's indexInParent follows.
void sortLargestFirst(NodeList& children);
// The same in two steps: the place in that order of each child, by listed index...
std::vector<int> largestFirstPlaces(const NodeList& children);
// ...and the children moved to those places.
void moveToPlaces(NodeList& children, std::vector<int> places);
