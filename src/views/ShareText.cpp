// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/ShareText.h"

#include "core/Node.h"
#include "text/SizeText.h"

QString shareText(const Node& node) {
    const NodePtr parent = node.parent.lock();
    if (!parent || node.size() < 0)
        return {};
    qint64 denominator = parent->size();
    if (denominator <= 0)
        denominator = parent->children ? parent->childrenTotal() : node.size();
    if (denominator < 1)
        return {};
    return barString(double(node.size()) / double(denominator));
}
