#include "text/StatusLine.h"

#include "core/Node.h"
#include "text/Lang.h"
#include "text/SizeText.h"

QString statusSeparator() {
    return QStringLiteral("  \u00b7  ");
}

QString statusLineForRoot(const Node& root) {
    const QString head = displayPath(root.url) + statusSeparator();
    if (root.size < 0 || !root.children)
        return head + t(QStringLiteral("calculating"));
    QString counts = t(QStringLiteral("items_total"));
    counts.replace(QStringLiteral("%d"), QString::number(root.children->size()));
    counts.replace(QStringLiteral("%@"), humanSize(root.size));
    return head + counts;
}
