#include "ui/TreeModel.h"

#include "app/AppController.h"
#include "text/Lang.h"
#include "text/SizeText.h"
#include "ui/ShareText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"

#include <QFontDatabase>

TreeModel::TreeModel(AppController* controller, QObject* parent)
    : QAbstractItemModel(parent), controller(controller) {}

void TreeModel::resetRoot() {
    beginResetModel();
    rowsOf.clear();
    rowOf.clear();
    root = controller->rootNode;
    if (root)
        rowOf.insert(root.get(), 0);
    // Views and testers walk the model while the reset is announced; nothing is
    // listed then, the root's listing comes when its row is opened.
    resetting = true;
    endResetModel();
    resetting = false;
}

void TreeModel::showNewRoot(const NodePtr&) {
    resetRoot();
    if (expand && root)
        expand(index(0, 0));
}

Node* TreeModel::nodeOf(const QModelIndex& index) const {
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : nullptr;
}

NodePtr TreeModel::nodeAt(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    if (!node)
        return {};
    if (node == root.get())
        return root;
    const NodePtr folder = node->parent.lock();
    const auto rows = folder ? rowsOf.constFind(folder.get()) : rowsOf.constEnd();
    if (rows == rowsOf.constEnd())
        return {};
    return rows->at(size_t(rowOf.value(node)));
}

QModelIndex TreeModel::indexOf(const Node& node, int column) const {
    const auto row = rowOf.constFind(&node);
    if (row == rowOf.constEnd())
        return {};
    return createIndex(*row, column, &node);
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column < 0 || column >= ColumnCount || row < 0)
        return {};
    if (!parent.isValid())
        return row == 0 && root ? createIndex(0, column, root.get()) : QModelIndex();
    const auto rows = rowsOf.constFind(nodeOf(parent));
    if (rows == rowsOf.constEnd() || row >= int(rows->size()))
        return {};
    return createIndex(row, column, rows->at(size_t(row)).get());
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
    const auto rows = rowsOf.constFind(nodeOf(parent));
    return rows == rowsOf.constEnd() ? 0 : int(rows->size());
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
    // Not exposed yet, or exposed from a listing that has since been discarded.
    return !rowsOf.contains(node) || !node->children;
}

void TreeModel::fetchMore(const QModelIndex& parent) {
    const NodePtr folder = nodeAt(parent);
    if (!folder || !canFetchMore(parent))
        return;
    if (rowsOf.contains(folder.get()))
        removeExposedRows(*folder, parent);
    controller->ensureListed(folder);
    exposeChildren(folder, parent);
}

void TreeModel::exposeChildren(const NodePtr& folder, const QModelIndex& folderIndex) {
    if (!folder->children)
        return;
    const NodeList& children = *folder->children;
    if (children.empty()) {
        rowsOf.insert(folder.get(), {});
        return;
    }
    changing.insert(folder.get());
    beginInsertRows(folderIndex, 0, int(children.size()) - 1);
    rowsOf.insert(folder.get(), children);
    for (size_t row = 0; row < children.size(); ++row)
        rowOf.insert(children[row].get(), int(row));
    endInsertRows();
    changing.remove(folder.get());
}

void TreeModel::removeExposedRows(const Node& folder, const QModelIndex& folderIndex) {
    const auto rows = rowsOf.constFind(&folder);
    if (rows == rowsOf.constEnd())
        return;
    if (rows->empty()) {
        rowsOf.remove(&folder);
        return;
    }
    changing.insert(&folder);
    beginRemoveRows(folderIndex, 0, int(rows->size()) - 1);
    // Keep the nodes alive until the view has let go of their indexes.
    const NodeList removed = rowsOf.take(&folder);
    for (const NodePtr& node : removed)
        forgetSubtree(*node);
    endRemoveRows();
    changing.remove(&folder);
}

void TreeModel::forgetSubtree(const Node& node) {
    rowOf.remove(&node);
    const auto rows = rowsOf.constFind(&node);
    if (rows == rowsOf.constEnd())
        return;
    const NodeList children = rowsOf.take(&node);
    for (const NodePtr& child : children)
        forgetSubtree(*child);
}

void TreeModel::rowsAppended(const NodePtr& folder, size_t first, size_t count) {
    const auto rows = rowsOf.constFind(folder.get());
    // A folder not exposed yet shows all its children when it is; rows of another
    // listing are replaced when that listing's end is drawn.
    if (rows == rowsOf.constEnd() || rows->size() != first || count == 0)
        return;
    const QModelIndex folderIndex = indexOf(*folder);
    if (!folderIndex.isValid())
        return;
    const NodeList& children = *folder->children;
    beginInsertRows(folderIndex, int(first), int(first + count) - 1);
    // Looked up again: views asked meanwhile may have exposed other folders.
    NodeList& shown = rowsOf[folder.get()];
    shown.insert(shown.end(), children.begin() + qsizetype(first),
                 children.begin() + qsizetype(first + count));
    for (size_t row = first; row < first + count; ++row)
        rowOf.insert(children[row].get(), int(row));
    endInsertRows();
}

bool TreeModel::isShown(const Node& node) const {
    if (!rowOf.contains(&node))
        return false;
    for (NodePtr folder = node.parent.lock(); folder; folder = folder->parent.lock())
        if (!isExpanded || !isExpanded(indexOf(*folder)))
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
    const auto rows = rowsOf.constFind(node.get());
    if (rows == rowsOf.constEnd())
        return;
    if (!node->children) {
        // The listing was discarded: drop the old rows; an open folder lists again now,
        // a closed one when it is next opened.
        removeExposedRows(*node, folderIndex);
        if (isExpanded && isExpanded(folderIndex))
            fetchMore(folderIndex);
        return;
    }
    if (*rows == *node->children) {
        if (!rows->empty())
            Q_EMIT dataChanged(index(0, SizeColumn, folderIndex),
                               index(int(rows->size()) - 1, ShareColumn, folderIndex),
                               {Qt::DisplayRole, Qt::ForegroundRole});
        return;
    }
    reorderRows(node, folderIndex);
}

void TreeModel::reorderRows(const NodePtr& folder, const QModelIndex& folderIndex) {
    NodeList& rows = rowsOf[folder.get()];
    if (rows.size() != folder->children->size()) {
        // Not a reorder of the same nodes: show the new listing from scratch.
        removeExposedRows(*folder, folderIndex);
        exposeChildren(folder, folderIndex);
        return;
    }
    Q_EMIT layoutAboutToBeChanged({QPersistentModelIndex(folderIndex)},
                                  QAbstractItemModel::VerticalSortHint);
    rows = *folder->children;
    for (size_t row = 0; row < rows.size(); ++row)
        rowOf.insert(rows[row].get(), int(row));
    // Open rows stay open and the selection stays on its nodes: every persistent
    // index follows its node to the node's new row.
    const QModelIndexList before = persistentIndexList();
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
            return humanSize(node->size);
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        if (role == Qt::ForegroundRole && node->size < 0)
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
