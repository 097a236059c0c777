#pragma once

#include "core/TreeDisplay.h"
#include "ui/RowIcons.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QSet>
#include <functional>

class AppController;

// The outline's model: its items are the tree's nodes themselves, the root the one
// top-level row. A folder's rows are what the model has exposed of its children; the
// model keeps them (strongly) until it removes them, so a view never holds an index
// to a freed node, and it knows every node's row without searching.
class TreeModel : public QAbstractItemModel, public TreeDisplay {
    Q_OBJECT
public:
    enum Column { NameColumn, SizeColumn, ShareColumn, ColumnCount };

    explicit TreeModel(AppController* controller, QObject* parent = nullptr);

    // Starts over with the controller's current root.
    void resetRoot();
    void showNewRoot(const NodePtr& root) override;
    // The node of an index (null for the invalid index).
    NodePtr nodeAt(const QModelIndex& index) const;
    // The node's index in the given column, invalid when it has no row.
    QModelIndex indexOf(const Node& node, int column = NameColumn) const;
    // How the model learns which rows are open, and opens one; the view sets them.
    std::function<bool(const QModelIndex&)> isExpanded;
    std::function<void(const QModelIndex&)> expand;

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

private:
    Node* nodeOf(const QModelIndex& index) const;
    void exposeChildren(const NodePtr& folder, const QModelIndex& folderIndex);
    void removeExposedRows(const Node& folder, const QModelIndex& folderIndex);
    void forgetSubtree(const Node& node);
    void reorderRows(const NodePtr& folder, const QModelIndex& folderIndex);

    AppController* controller;
    NodePtr root;
    // Rows of every folder whose children the model has exposed, in row order.
    QHash<const Node*, NodeList> rowsOf;
    // Row of every node in the model, within its folder's rows.
    QHash<const Node*, int> rowOf;
    RowIcons icons;
    bool resetting = false;
    // Folders whose rows are being added or removed. Views and testers walk the model
    // while a change is announced; a fetch they start on the same folder would change
    // its rows a second time inside the first change.
    QSet<const Node*> changing;
};
