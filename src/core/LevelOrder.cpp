// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/LevelOrder.h"

#include <algorithm>

std::vector<EntryId> largestFirst(const SizeIndex& index, EntryId folder) {
    std::vector<EntryId> listed = index.children(folder);
    // Each entry's size is read once, into a compact copy the sort works on.
    std::vector<std::pair<qint64, quint32>> bySize;
    bySize.reserve(listed.size());
    for (const EntryId child : listed)
        bySize.emplace_back(index.allocated(child), quint32(bySize.size()));
    std::ranges::sort(bySize, [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first > b.first : a.second < b.second;
    });
    std::vector<EntryId> sorted;
    sorted.reserve(listed.size());
    for (const auto& [size, at] : bySize)
        sorted.push_back(listed[at]);
    return sorted;
}
