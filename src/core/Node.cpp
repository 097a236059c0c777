// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/Node.h"

#include <algorithm>

void Node::setSize(qint64 size) {
    // A node its folder has let go of (listed again since) counts there no more.
    const NodePtr folder = parent.lock();
    if (folder && folder->children && size_t(indexInParent) < folder->children->size() &&
        (*folder->children)[size_t(indexInParent)].get() == this)
        folder->sizedChildrenTotal += std::max<qint64>(0, size) - std::max<qint64>(0, bytes);
    bytes = size;
}

void Node::dropChildren() {
    children.reset();
    sizedChildrenTotal = 0;
}

std::vector<int> largestFirstPlaces(const NodeList& children) {
    // The sort runs on a compact copy of the sizes: the nodes of a large level lie
    // scattered over the heap, and comparing through them would visit them again and
    // again. They are read once, in listed order (the order they were allocated in).
    std::vector<std::pair<qint64, int>> bySize;
    bySize.reserve(children.size());
    for (const NodePtr& child : children)
        bySize.emplace_back(child->size(), int(bySize.size()));
    // Equal sizes keep their listed order.
    std::ranges::sort(bySize, [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    });
    std::vector<int> places(children.size());
    for (size_t place = 0; place < bySize.size(); ++place)
        places[size_t(bySize[place].second)] = int(place);
    return places;
}

void moveToPlaces(NodeList& children, std::vector<int> places) {
    for (size_t listed = 0; listed < children.size(); ++listed)
        children[listed]->indexInParent = places[listed];
    // Pointers are swapped in place; the nodes themselves are not visited again.
    for (size_t place = 0; place < children.size(); ++place)
        while (size_t(places[place]) != place) {
            const size_t target = size_t(places[place]);
            std::swap(children[place], children[target]);
            std::swap(places[place], places[target]);
        }
}

void sortLargestFirst(NodeList& children) {
    moveToPlaces(children, largestFirstPlaces(children));
}

Node::Node(QByteArray url_, bool isDir_, const NodePtr& parent_, std::optional<ItemKind> kind_)
    : url(std::move(url_)), isDir(isDir_),
      kind(kind_.value_or(isDir_ ? ItemKind::Folder : ItemKind::File)), parent(parent_) {}

QString Node::name() const {
    return displayPath(lastPathComponent(url));
}
