// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/TreeModel.h"

#include "core/LevelOrder.h"
#include "core/SizeTree.h"
#include "platform/MountTable.h"
#include "platform/Paths.h"
#include "text/Lang.h"
#include "text/SizeText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"
#include "views/ShareText.h"

#include <QTimer>
#include <utility>

TreeModel::TreeModel(SizeTree& tree, QObject* parent) : QAbstractItemModel(parent), tree(tree) {}

struct TreeModel::ChangeUnderWay {
    explicit ChangeUnderWay(TreeModel& model) : model(model) { ++model.changesUnderWay; }
    ~ChangeUnderWay() {
        if (--model.changesUnderWay == 0 && !model.fetchWhenDone.isEmpty())
            QTimer::singleShot(0, &model, &TreeModel::fetchWaitingRows);
    }
    TreeModel& model;
};

void TreeModel::fetchWaitingRows() {
    const QSet<EntryId> waiting = std::exchange(fetchWhenDone, {});
    for (const EntryId folder : waiting)
        fetchMore(indexOf(folder));
}

void TreeModel::showNewRoot(const std::shared_ptr<const SizeIndex>& rows, EntryId top) {
    beginResetModel();
    levels.clear();
    expanded.clear();
    shown = rows;
    root = top;
    // Views and testers walk the model while the reset is announced; nothing is
    // exposed then. The root is always open: its rows come right after, whether or not
    // a view has asked for them yet.
    resetting = true;
    endResetModel();
    resetting = false;
    if (!shown)
        return;
    exposeChildren(root, index(0, 0));
    expanded.insert(root);
    Q_EMIT openWanted(index(0, 0));
}

EntryId TreeModel::entryAt(const QModelIndex& index) const {
    return index.isValid() ? EntryId(index.internalId()) : kNoEntry;
}

ItemRef TreeModel::itemAt(const QModelIndex& index) const {
    return index.isValid() ? itemRefOf(shown, root, entryAt(index)) : ItemRef();
}

void TreeModel::setExpanded(const QModelIndex& index, bool open) {
    const EntryId id = entryAt(index);
    if (id == kNoEntry)
        return;
    if (!open) {
        expanded.remove(id);
        return;
    }
    expanded.insert(id);
    // A folder that finished sorting while closed shows its sorted order when opened.
    redrawRowAndChildren(id);
}

int TreeModel::rowOf(EntryId id) const {
    if (id == root)
        return 0;
    const auto level = levels.constFind(shown->parent(id));
    if (level == levels.cend())
        return -1;
    if (const auto folder = level->folderRows.constFind(id); folder != level->folderRows.cend())
        return *folder;
    // A file: looked for in its level, which only a redraw of one row asks for.
    const auto found = std::ranges::find(level->rows, id);
    return found == level->rows.end() ? -1 : int(found - level->rows.begin());
}

QModelIndex TreeModel::indexOf(EntryId id, int column) const {
    if (!shown || id == kNoEntry)
        return {};
    const int row = rowOf(id);
    return row < 0 ? QModelIndex() : createIndex(row, column, quintptr(id));
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column < 0 || column >= ColumnCount || row < 0 || !shown)
        return {};
    if (!parent.isValid())
        return row == 0 ? createIndex(0, column, quintptr(root)) : QModelIndex();
    if (parent.column() != NameColumn)
        return {};
    const auto level = levels.constFind(entryAt(parent));
    if (level == levels.cend() || size_t(row) >= level->rows.size())
        return {};
    return createIndex(row, column, quintptr(level->rows[size_t(row)]));
}

QModelIndex TreeModel::parent(const QModelIndex& child) const {
    const EntryId id = entryAt(child);
    if (id == kNoEntry || id == root)
        return {};
    return indexOf(shown->parent(id));
}

int TreeModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid())
        return shown ? 1 : 0;
    if (parent.column() != NameColumn)
        return 0;
    const auto level = levels.constFind(entryAt(parent));
    return level == levels.cend() ? 0 : int(level->rows.size());
}

int TreeModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

bool TreeModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid())
        return bool(shown);
    // Every folder shows an expander, also one that is empty or not yet listed.
    return parent.column() == NameColumn && shown->isFolder(entryAt(parent));
}

bool TreeModel::canFetchMore(const QModelIndex& parent) const {
    const EntryId id = entryAt(parent);
    if (id == kNoEntry || parent.column() != NameColumn || resetting)
        return false;
    return shown->isFolder(id) && !levels.contains(id);
}

void TreeModel::fetchMore(const QModelIndex& parent) {
    if (!canFetchMore(parent))
        return;
    if (changesUnderWay > 0)
        fetchWhenDone.insert(entryAt(parent));
    else
        exposeChildren(entryAt(parent), parent);
}

void TreeModel::exposeChildren(EntryId folder, const QModelIndex& folderIndex) {
    // What the index holds is shown at once: in order when the level is measured.
    std::vector<EntryId> rows =
        shown->isMeasured(folder) ? largestFirst(*shown, folder) : shown->children(folder);
    Level level;
    for (size_t row = 0; row < rows.size(); ++row)
        if (shown->isFolder(rows[row]))
            level.folderRows.insert(rows[row], int(row));
    level.rows = std::move(rows);
    const int count = int(level.rows.size());
    {
        const ChangeUnderWay change(*this);
        if (count > 0)
            beginInsertRows(folderIndex, 0, count - 1);
        levels.insert(folder, std::move(level));
        if (count > 0)
            endInsertRows();
    }
    tree.rowsShown(folder, size_t(count));
}

void TreeModel::forgetLevels(EntryId folder) {
    const auto level = levels.constFind(folder);
    if (level == levels.cend())
        return;
    // Only a folder with rows can have folders with rows (or open ones) below it.
    const QList<EntryId> below = level->folderRows.keys();
    levels.erase(level);
    for (const EntryId child : below) {
        expanded.remove(child);
        forgetLevels(child);
    }
}

void TreeModel::rowsAppended(EntryId folder, size_t first, size_t count) {
    const auto level = levels.find(folder);
    // A folder without rows shows all its entries when it gets them.
    if (level == levels.end() || level->rows.size() != first || count == 0)
        return;
    const QModelIndex folderIndex = indexOf(folder);
    if (!folderIndex.isValid())
        return;
    const std::vector<EntryId> added = shown->children(folder, first, count);
    if (added.empty())
        return;
    const ChangeUnderWay change(*this);
    beginInsertRows(folderIndex, int(first), int(first + added.size()) - 1);
    for (const EntryId id : added) {
        if (shown->isFolder(id))
            level->folderRows.insert(id, int(level->rows.size()));
        level->rows.push_back(id);
    }
    level->knownSumValid = false;
    endInsertRows();
}

bool TreeModel::isShown(EntryId folder) const {
    if (!levels.contains(folder) || !expanded.contains(folder))
        return false;
    for (EntryId above = folder; above != root;) {
        above = shown->parent(above);
        if (!expanded.contains(above))
            return false;
    }
    return true;
}

void TreeModel::redrawRow(EntryId id) {
    const QModelIndex first = indexOf(id, NameColumn);
    if (!first.isValid())
        return;
    if (id != root)
        if (const auto level = levels.constFind(shown->parent(id)); level != levels.cend())
            level->knownSumValid = false;
    Q_EMIT dataChanged(first, indexOf(id, ShareColumn),
                       {Qt::DisplayRole, Qt::ForegroundRole, Qt::DecorationRole});
}

void TreeModel::redrawLevel(EntryId folder, const QModelIndex& folderIndex) {
    const auto level = levels.constFind(folder);
    if (level == levels.cend() || level->rows.empty())
        return;
    level->knownSumValid = false;
    const int rows = int(level->rows.size());
    Q_EMIT dataChanged(index(0, SizeColumn, folderIndex), index(rows - 1, ShareColumn, folderIndex),
                       {Qt::DisplayRole, Qt::ForegroundRole});
}

void TreeModel::redrawRowAndChildren(EntryId folder) {
    const QModelIndex folderIndex = indexOf(folder);
    if (!folderIndex.isValid())
        return;
    redrawRow(folder);
    redrawLevel(folder, folderIndex);
}

void TreeModel::redrawAll() {
    if (!shown)
        return;
    redrawRow(root);
    for (auto level = levels.cbegin(); level != levels.cend(); ++level)
        if (const QModelIndex folderIndex = indexOf(level.key()); folderIndex.isValid())
            redrawLevel(level.key(), folderIndex);
}

void TreeModel::reorderChildren(EntryId folder, const std::vector<EntryId>& order) {
    const auto level = levels.find(folder);
    const QModelIndex folderIndex = indexOf(folder);
    if (level == levels.end() || !folderIndex.isValid())
        return;
    if (level->rows.size() != order.size()) {
        // Not every entry has a row: show the new order from scratch.
        const int count = int(level->rows.size());
        {
            const ChangeUnderWay change(*this);
            if (count > 0) {
                beginRemoveRows(folderIndex, 0, count - 1);
                forgetLevels(folder);
                endRemoveRows();
            } else {
                forgetLevels(folder);
            }
        }
        exposeChildren(folder, folderIndex);
        return;
    }
    const ChangeUnderWay change(*this);
    Q_EMIT layoutAboutToBeChanged({QPersistentModelIndex(folderIndex)},
                                  QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    QHash<EntryId, int> newRows;
    newRows.reserve(qsizetype(order.size()));
    level->folderRows.clear();
    for (size_t row = 0; row < order.size(); ++row) {
        newRows.insert(order[row], int(row));
        if (shown->isFolder(order[row]))
            level->folderRows.insert(order[row], int(row));
    }
    level->rows = order;
    // Open rows stay open and the selection stays on its entries: every persistent
    // index follows its entry to its new row.
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before) {
        const EntryId id = entryAt(old);
        const auto moved = newRows.constFind(id);
        after << (moved != newRows.cend() && shown->parent(id) == folder
                      ? createIndex(*moved, old.column(), quintptr(id))
                      : old);
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({QPersistentModelIndex(folderIndex)},
                         QAbstractItemModel::VerticalSortHint);
}

void TreeModel::dropChildren(EntryId folder) {
    const auto level = levels.constFind(folder);
    if (level == levels.cend())
        return;
    const QModelIndex folderIndex = indexOf(folder);
    const int count = int(level->rows.size());
    {
        const ChangeUnderWay change(*this);
        if (folderIndex.isValid() && count > 0) {
            beginRemoveRows(folderIndex, 0, count - 1);
            forgetLevels(folder);
            endRemoveRows();
        } else {
            forgetLevels(folder);
        }
    }
    // An open folder takes its new entries as they come.
    if (folderIndex.isValid() && expanded.contains(folder))
        exposeChildren(folder, folderIndex);
}

QString TreeModel::sizeText(EntryId id) const {
    if (!shown->isFolder(id))
        return humanSize(shown->allocated(id));
    const quint16 state = shown->state(id);
    if (state & NotEntered)
        return {};
    if (state & Partial)
        return tf(QStringLiteral("mark_partial"), {humanSize(shown->allocated(id))});
    return humanSize((state & Measured) ? shown->allocated(id) : -1);
}

QString TreeModel::shareText(EntryId id) const {
    if (id == root)
        return {};
    const EntryId folder = shown->parent(id);
    const bool sized = !shown->isFolder(id) || shown->isMeasured(id);
    if (!sized || (shown->state(id) & NotEntered))
        return {};
    qint64 total = shown->isMeasured(folder) ? shown->allocated(folder) : 0;
    if (total <= 0) {
        // While the folder's own total is not in, the known sizes of its rows stand in.
        const auto level = levels.constFind(folder);
        if (level == levels.cend())
            return {};
        if (!level->knownSumValid) {
            level->knownSum = 0;
            for (const EntryId row : level->rows)
                if (!shown->isFolder(row) || shown->isMeasured(row))
                    level->knownSum += shown->allocated(row);
            level->knownSumValid = true;
        }
        total = level->knownSum;
    }
    return ::shareText(shown->allocated(id), total);
}

QString TreeModel::description(EntryId id) const {
    if (!shown->isFolder(id))
        return {};
    QStringList said;
    const quint16 state = shown->state(id);
    if (state & (Unreadable | PartlyUnreadable))
        said << t(QStringLiteral("desc_unreadable"));
    if (state & OtherVolume) {
        const QByteArray source = mountSourceAt(shown->pathOf(id)).value_or(QByteArray());
        said << tf(QStringLiteral("desc_volume"), {displayPath(source)});
    }
    if (const quint32 below = shown->unreadableBelow(id); below > 0 && shown->isMeasured(id))
        said << tf(QStringLiteral("desc_unreadable_below"), {QString::number(below)});
    if (state & Partial)
        said << t(QStringLiteral("desc_partial"));
    return said.join(QStringLiteral("; "));
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
    const EntryId id = entryAt(index);
    if (id == kNoEntry || !shown)
        return {};
    if (role == Qt::AccessibleDescriptionRole || role == Qt::ToolTipRole) {
        const QString said = description(id);
        return said.isEmpty() ? QVariant() : QVariant(said);
    }
    switch (index.column()) {
    case NameColumn:
        if (role == Qt::DisplayRole)
            return displayPath(shown->name(id));
        if (role == Qt::DecorationRole) {
            const quint16 state = shown->isFolder(id) ? shown->state(id) : 0;
            const RowIcons::Mark mark = (state & (Unreadable | PartlyUnreadable))
                                            ? RowIcons::Mark::Unreadable
                                        : (state & OtherVolume) ? RowIcons::Mark::OtherVolume
                                                                : RowIcons::Mark::None;
            return icons.icon(shown->kind(id), displayPath(shown->name(id)), mark);
        }
        break;
    case SizeColumn:
        if (role == Qt::DisplayRole)
            return sizeText(id);
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        if (role == Qt::ForegroundRole && shown->isFolder(id) &&
            (!shown->isMeasured(id) || (shown->state(id) & Partial)))
            return tertiaryTextColor();
        break;
    case ShareColumn:
        if (role == Qt::DisplayRole)
            return shareText(id);
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
