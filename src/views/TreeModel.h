// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/TreeDisplay.h"
#include "views/RowIcons.h"
#include "views/ShownRowCounts.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QSet>

class SizeTree;

// The outline's model: its items are the tree's nodes themselves, the root the one
// top-level row. A folder's rows are the first children of its listing that the model
// has exposed; the tree tells the model before it reorders or drops a listing, so the
// rows always are the children in their order, and a node's row is its place there.
class TreeModel : public QAbstractItemModel, public TreeDisplay {
    Q_OBJECT
public:
    enum Column { NameColumn, SizeColumn, ShareColumn, ColumnCount };

    explicit TreeModel(SizeTree& tree, QObject* parent = nullptr);

    // Starts over with the tree's current root.
    void resetRoot();
    void showNewRoot(const NodePtr& root) override;
    // The node of an index (null for the invalid index).
    NodePtr nodeAt(const QModelIndex& index) const;
    // The node's index in the given column, invalid when it has no row.
    QModelIndex indexOf(const Node& node, int column = NameColumn) const;
    // The view opened or closed a folder's row.
    void setExpanded(const QModelIndex& index, bool expanded);
    void layOutNow() override { Q_EMIT layOutWanted(); }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    bool isShown(const Node& node) const override;
    void rowsAppended(const NodePtr& folder, size_t first, size_t count) override;
    void redrawRow(const NodePtr& node) override;
    void redrawRowAndChildren(const NodePtr& node) override;
    void reorderChildren(const NodePtr& folder, const std::function<void()>& reorder) override;
    void dropChildren(const NodePtr& folder) override;

Q_SIGNALS:
    // The new root's row is to be shown open.
    void openWanted(const QModelIndex& index);
    // The views lay out the rows just appended now, not in a later pass.
    void layOutWanted();

private:
    Node* nodeOf(const QModelIndex& index) const;
    void exposeChildren(const NodePtr& folder, const QModelIndex& folderIndex);
    void removeExposedRows(const Node& folder, const QModelIndex& folderIndex);
    void forgetExposed(const Node& folder);
    int exposedRows(const Node& folder) const;

    SizeTree& tree;
    NodePtr root;
    // How many of its children every folder with exposed rows shows. Nothing is kept
    // per row: a large folder's rows cost the model nothing beyond the nodes.
    ShownRowCounts exposed;
    // Folders whose rows the view shows open.
    QSet<const Node*> expanded;
    RowIcons icons;
    bool resetting = false;
    // Folders whose rows are being added or removed. Views and testers walk the model
    // while a change is announced; a fetch they start on the same folder would change
    // its rows a second time inside the first change.
    QSet<const Node*> changing;
};
