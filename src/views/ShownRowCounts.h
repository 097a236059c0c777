// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/Node.h"

#include <QHash>
#include <utility>

// How many of its children every folder with shown rows shows. Laying out a level asks
// for each of its rows in turn, so the last folder looked up is kept; every change
// forgets it.
class ShownRowCounts {
public:
    int of(const Node& folder) const {
        if (last.first != &folder)
            last = {&folder, counts.value(&folder, 0)};
        return last.second;
    }
    bool contains(const Node* folder) const { return counts.contains(folder); }
    void set(const Node* folder, int rows) {
        counts.insert(folder, rows);
        last = {};
    }
    // False when the folder showed no rows.
    bool remove(const Node* folder) {
        last = {};
        return counts.remove(folder);
    }
    void clear() {
        counts.clear();
        last = {};
    }

private:
    QHash<const Node*, int> counts;
    mutable std::pair<const Node*, int> last;
};
