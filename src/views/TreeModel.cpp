// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/TreeModel.h"

#include "core/SizeTree.h"
#include "text/Lang.h"
#include "text/SizeText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"
#include "views/ShareText.h"

#include <QFontDatabase>

TreeModel::TreeModel(SizeTree& tree, QObject* parent) : QAbstractItemModel(parent), tree(tree) {}

void TreeModel::setExpanded(const QModelIndex& index, bool open) {
    const Node* node = nodeOf(index);
    if (!node)
        return;
    if (!open) {
        expanded.remove(node);
        return;
    }
    expanded.insert(node);
    // A folder that finished sorting while closed shows its sorted order when opened.
    if (const NodePtr folder = nodeAt(index))
        redrawRowAndChildren(folder);
}

void TreeModel::resetRoot() {
    beginResetModel();
    exposed.clear();
    expanded.clear();
    root = tree.root();
    // Views and testers walk the model while the reset is announced; nothing is
    // listed then, the root's listing comes when its row is opened.
    resetting = true;
    endResetModel();
    resetting = false;
}

void TreeModel::showNewRoot(const NodePtr&) {
    resetRoot();
    if (root)
        Q_EMIT openWanted(index(0, 0));
}

Node* TreeModel::nodeOf(const QModelIndex& index) const {
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : nullptr;
}

int TreeModel::exposedRows(const Node& folder) const {
    return exposed.of(folder);
}

NodePtr TreeModel::nodeAt(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    if (!node)
        return {};
    if (node == root.get())
        return root;
    const NodePtr folder = node->parent.lock();
    const size_t row = size_t(index.row());
    if (!folder || !folder->children || row >= folder->children->size() ||
        (*folder->children)[row].get() != node)
        return {};
    return (*folder->children)[row];
}

QModelIndex TreeModel::indexOf(const Node& node, int column) const {
    if (&node == root.get())
        return createIndex(0, column, root.get());
    const NodePtr folder = node.parent.lock();
    if (!folder || node.indexInParent >= exposedRows(*folder))
        return {};
    // A node of a discarded listing may still be held by work on its way; it has no row.
    if ((*folder->children)[size_t(node.indexInParent)].get() != &node)
        return {};
    return createIndex(node.indexInParent, column, &node);
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column < 0 || column >= ColumnCount || row < 0)
        return {};
    if (!parent.isValid())
        return row == 0 && root ? createIndex(0, column, root.get()) : QModelIndex();
    const Node* folder = nodeOf(parent);
    if (parent.column() != NameColumn || row >= exposedRows(*folder))
        return {};
    return createIndex(row, column, (*folder->children)[size_t(row)].get());
}

QModelIndex TreeModel::parent(const QModelIndex& child) const {
    const Node* node = nodeOf(child);
    if (!node || node == root.get())
        return {};
    const NodePtr folder = node->parent.lock();
    return folder ? indexOf(*folder) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid())
        return root ? 1 : 0;
    if (parent.column() != NameColumn)
        return 0;
    return exposedRows(*nodeOf(parent));
}

int TreeModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

bool TreeModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid())
        return bool(root);
    // Every folder shows an expander, also one that is empty or not yet listed.
    return parent.column() == NameColumn && nodeOf(parent)->isDir;
}

bool TreeModel::canFetchMore(const QModelIndex& parent) const {
    const Node* node = nodeOf(parent);
    if (!node || !node->isDir || parent.column() != NameColumn || resetting ||
        changing.contains(node))
        return false;
    return !exposed.contains(node);
}

void TreeModel::fetchMore(const QModelIndex& parent) {
    const NodePtr folder = nodeAt(parent);
    if (!folder || !canFetchMore(parent))
        return;
    tree.ensureListed(folder);
    exposeChildren(folder, parent);
}

void TreeModel::exposeChildren(const NodePtr& folder, const QModelIndex& folderIndex) {
    if (!folder->children)
        return;
    const int count = int(folder->children->size());
    if (count == 0) {
        exposed.set(folder.get(), 0);
        return;
    }
    changing.insert(folder.get());
    beginInsertRows(folderIndex, 0, count - 1);
    exposed.set(folder.get(), count);
    endInsertRows();
    changing.remove(folder.get());
}

void TreeModel::removeExposedRows(const Node& folder, const QModelIndex& folderIndex) {
    const int count = exposedRows(folder);
    if (count == 0) {
        exposed.remove(&folder);
        return;
    }
    changing.insert(&folder);
    beginRemoveRows(folderIndex, 0, count - 1);
    forgetExposed(folder);
    endRemoveRows();
    changing.remove(&folder);
}

void TreeModel::forgetExposed(const Node& folder) {
    // Only a folder with exposed rows can have exposed (or open) folders below it.
    if (!exposed.remove(&folder) || !folder.children)
        return;
    for (const NodePtr& child : *folder.children)
        if (child->isDir) {
            expanded.remove(child.get());
            forgetExposed(*child);
        }
}

void TreeModel::rowsAppended(const NodePtr& folder, size_t first, size_t count) {
    // A folder not exposed yet shows all its children when it is.
    if (!exposed.contains(folder.get()) || size_t(exposed.of(*folder)) != first || count == 0)
        return;
    const QModelIndex folderIndex = indexOf(*folder);
    if (!folderIndex.isValid())
        return;
    beginInsertRows(folderIndex, int(first), int(first + count) - 1);
    exposed.set(folder.get(), int(first + count));
    endInsertRows();
}

bool TreeModel::isShown(const Node& node) const {
    if (!indexOf(node).isValid())
        return false;
    for (NodePtr folder = node.parent.lock(); folder; folder = folder->parent.lock())
        if (!expanded.contains(folder.get()))
            return false;
    return true;
}

void TreeModel::redrawRow(const NodePtr& node) {
    const QModelIndex first = indexOf(*node, NameColumn);
    if (first.isValid())
        Q_EMIT dataChanged(first, indexOf(*node, ShareColumn),
                           {Qt::DisplayRole, Qt::ForegroundRole, Qt::DecorationRole});
}

void TreeModel::redrawRowAndChildren(const NodePtr& node) {
    const QModelIndex folderIndex = indexOf(*node);
    if (!folderIndex.isValid())
        return;
    redrawRow(node);
    if (!node->children) {
        // The listing was discarded (its rows went with it): an open folder lists
        // again now, a closed one when it is next opened.
        if (expanded.contains(node.get()))
            fetchMore(folderIndex);
        return;
    }
    if (const int rows = exposedRows(*node); rows > 0)
        Q_EMIT dataChanged(index(0, SizeColumn, folderIndex),
                           index(rows - 1, ShareColumn, folderIndex),
                           {Qt::DisplayRole, Qt::ForegroundRole});
}

void TreeModel::reorderChildren(const NodePtr& folder, const std::function<void()>& reorder) {
    const QModelIndex folderIndex = indexOf(*folder);
    const int rows = exposedRows(*folder);
    if (!folderIndex.isValid() || rows == 0) {
        reorder();
        return;
    }
    if (size_t(rows) != folder->children->size()) {
        // Not every child has a row: show the new order from scratch.
        removeExposedRows(*folder, folderIndex);
        reorder();
        exposeChildren(folder, folderIndex);
        return;
    }
    Q_EMIT layoutAboutToBeChanged({QPersistentModelIndex(folderIndex)},
                                  QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    reorder();
    // Open rows stay open and the selection stays on its nodes: every persistent
    // index follows its node to the node's new row.
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before) {
        const Node* node = nodeOf(old);
        after << (node ? indexOf(*node, old.column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({QPersistentModelIndex(folderIndex)},
                         QAbstractItemModel::VerticalSortHint);
}

void TreeModel::dropChildren(const NodePtr& folder) {
    const QModelIndex folderIndex = indexOf(*folder);
    if (folderIndex.isValid())
        removeExposedRows(*folder, folderIndex);
    else
        forgetExposed(*folder);
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
    const Node* node = nodeOf(index);
    if (!node)
        return {};
    switch (index.column()) {
    case NameColumn:
        if (role == Qt::DisplayRole)
            return node->name();
        if (role == Qt::DecorationRole)
            return icons.icon(*node);
        break;
    case SizeColumn:
        if (role == Qt::DisplayRole)
            return humanSize(node->size());
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        if (role == Qt::ForegroundRole && node->size() < 0)
            return tertiaryTextColor();
        break;
    case ShareColumn:
        if (role == Qt::DisplayRole)
            return shareText(*node);
        if (role == Qt::ForegroundRole)
            return accentColor();
        if (role == Qt::FontRole)
            return monoFont(12);
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
        break;
    }
    return {};
}

QVariant TreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char* const keys[] = {"col_name", "col_size", "col_pct"};
    return section >= 0 && section < ColumnCount ? t(QLatin1String(keys[section])) : QVariant();
}
