#pragma once

#include "core/TreeDisplay.h"

#include <QList>
#include <QSet>

// Stands in for the outline: says which nodes are shown and records every redraw.
class RecordingDisplay : public TreeDisplay {
public:
    QSet<const Node*> shown;
    QList<const Node*> rowRedraws;
    QList<const Node*> childRedraws;
    // The children's order each time a folder was redrawn with its children.
    QList<QList<QByteArray>> orderAtChildRedraw;

    bool isShown(const Node& node) const override { return shown.contains(&node); }
    void redrawRow(const NodePtr& node) override { rowRedraws << node.get(); }
    void redrawRowAndChildren(const NodePtr& node) override {
        childRedraws << node.get();
        QList<QByteArray> order;
        if (node->children)
            for (const NodePtr& child : *node->children)
                order << child->url;
        orderAtChildRedraw << order;
    }
};
