// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/StatusLine.h"

#include "core/Node.h"
#include "text/Lang.h"
#include "text/SizeText.h"

QString statusSeparator() {
    return QStringLiteral("  \u00b7  ");
}

QString statusLineForRoot(const Node& root) {
    if (root.size() < 0 || !root.children)
        return displayPath(root.url) + statusSeparator() + t(QStringLiteral("calculating"));
    return countedStatusLine(root);
}

QString countedStatusLine(const Node& root) {
    QString counts = t(QStringLiteral("items_total"));
    const qsizetype count = root.children ? qsizetype(root.children->size()) : 0;
    counts.replace(QStringLiteral("%d"), QString::number(count));
    counts.replace(QStringLiteral("%@"), humanSize(root.size()));
    return displayPath(root.url) + statusSeparator() + counts;
}
