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

TreeModel::TreeModel(SizeTree& tree, QObject* parent) : QAbstractItemModel(parent), tree(tree) {}

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
        // A share of what a stopped walk found is not final either: dimmed, like its
        // size.
        if (role == Qt::ForegroundRole) {
            const bool partial = (shown->state(id) & Partial) ||
                                 (id != root && (shown->state(shown->parent(id)) & Partial));
            return partial ? tertiaryTextColor() : accentColor();
        }
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
