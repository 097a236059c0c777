// SPDX-License-Identifier: GPL-2.0-or-later
// The outline model's rows: which entries of a folder have rows, in which order, and
// how they change as the folder is listed, measured, put in order and walked again.
#include "core/LevelOrder.h"
#include "core/SizeTree.h"
#include "views/TreeModel.h"

#include <QTimer>
#include <algorithm>
#include <utility>

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

bool TreeModel::canFetchMore(const QModelIndex& parent) const {
    const EntryId id = entryAt(parent);
    if (id == kNoEntry || parent.column() != NameColumn || resetting || !shown->isFolder(id))
        return false;
    return !levels.contains(id);
}

void TreeModel::fetchMore(const QModelIndex& parent) {
    if (!canFetchMore(parent))
        return;
    if (changesUnderWay > 0)
        fetchWhenDone.insert(entryAt(parent));
    else
        exposeChildren(entryAt(parent), parent);
}

// Views fetch a folder's rows whenever they lay it out and it can fetch more; the next
// page of a large level is asked for only when its last row comes into view.
bool TreeModel::hasMoreRows(const QModelIndex& folder) const {
    const EntryId id = entryAt(folder);
    const auto level = levels.constFind(id);
    return level != levels.cend() && folder.column() == NameColumn &&
           shown->childCount(id) > level->rows.size();
}

void TreeModel::showMoreRows(const QModelIndex& folder) {
    if (!hasMoreRows(folder) || changesUnderWay > 0)
        return;
    const EntryId id = entryAt(folder);
    Level& level = levels[id];
    level.limit = std::max(level.limit, level.rows.size()) + kRowsPerPage;
    const size_t first = level.rows.size();
    const size_t count = std::min(level.limit, shown->childCount(id)) - first;
    appendRows(folder, level,
               level.order.empty()
                   ? shown->children(id, first, count)
                   : std::vector<EntryId>(level.order.begin() + qsizetype(first),
                                          level.order.begin() + qsizetype(first + count)));
}

void TreeModel::exposeChildren(EntryId folder, const QModelIndex& folderIndex) {
    // What the index holds is shown at once: in order when the level is measured.
    std::vector<EntryId> rows =
        shown->isMeasured(folder) ? largestFirst(*shown, folder) : shown->children(folder);
    Level level;
    if (rows.size() > kRowsPerPage) {
        if (shown->isMeasured(folder))
            level.order = rows;
        rows.resize(kRowsPerPage);
    }
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

void TreeModel::appendRows(const QModelIndex& folderIndex, Level& level,
                           const std::vector<EntryId>& added) {
    if (added.empty())
        return;
    const ChangeUnderWay change(*this);
    const int first = int(level.rows.size());
    beginInsertRows(folderIndex, first, first + int(added.size()) - 1);
    for (const EntryId id : added) {
        if (shown->isFolder(id))
            level.folderRows.insert(id, int(level.rows.size()));
        level.rows.push_back(id);
    }
    level.knownSumValid = false;
    endInsertRows();
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
    // A folder without rows shows all its entries when it gets them; a level in order
    // is not walked.
    if (level == levels.end() || count == 0 || !level->order.empty())
        return;
    const QModelIndex folderIndex = indexOf(folder);
    if (!folderIndex.isValid())
        return;
    // Whatever the view has fetched meanwhile, the rows go on from the last one shown,
    // up to the page the view has asked for.
    const size_t from = level->rows.size();
    const size_t to = std::min(first + count, level->limit);
    if (to > from)
        appendRows(folderIndex, *level, shown->children(folder, from, to - from));
}

void TreeModel::reorderChildren(EntryId folder, const std::vector<EntryId>& order) {
    const auto level = levels.find(folder);
    const QModelIndex folderIndex = indexOf(folder);
    if (level == levels.end() || !folderIndex.isValid())
        return;
    if (level->rows.size() == order.size() && level->order.empty()) {
        moveRows(folder, folderIndex, *level, order);
        return;
    }
    // The rows become the first of the order, as many as the view has asked for (a
    // large level keeps its page): the missing ones come in at the end, all move into
    // their place, and those left over at the end go.
    const size_t count = std::min(order.size(), std::max(level->rows.size(), level->limit));
    level->order = count < order.size() ? order : std::vector<EntryId>();
    const std::vector<EntryId> wanted(order.begin(), order.begin() + qsizetype(count));
    const QSet<EntryId> wantedSet(wanted.begin(), wanted.end());
    std::vector<EntryId> missing;
    {
        const QSet<EntryId> present(level->rows.begin(), level->rows.end());
        for (const EntryId id : wanted)
            if (!present.contains(id))
                missing.push_back(id);
    }
    appendRows(folderIndex, *level, missing);

    std::vector<EntryId> newOrder = wanted;
    for (const EntryId id : level->rows)
        if (!wantedSet.contains(id))
            newOrder.push_back(id);
    moveRows(folder, folderIndex, *level, newOrder);

    if (level->rows.size() > count) {
        const ChangeUnderWay change(*this);
        beginRemoveRows(folderIndex, int(count), int(level->rows.size()) - 1);
        for (size_t row = count; row < level->rows.size(); ++row) {
            level->folderRows.remove(level->rows[row]);
            expanded.remove(level->rows[row]);
            forgetLevels(level->rows[row]);
        }
        level->rows.resize(count);
        level->knownSumValid = false;
        endRemoveRows();
    }
}

void TreeModel::moveRows(EntryId folder, const QModelIndex& folderIndex, Level& level,
                         const std::vector<EntryId>& order) {
    const ChangeUnderWay change(*this);
    Q_EMIT layoutAboutToBeChanged({QPersistentModelIndex(folderIndex)},
                                  QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    QHash<EntryId, int> newRows;
    newRows.reserve(qsizetype(order.size()));
    level.folderRows.clear();
    for (size_t row = 0; row < order.size(); ++row) {
        newRows.insert(order[row], int(row));
        if (shown->isFolder(order[row]))
            level.folderRows.insert(order[row], int(row));
    }
    level.rows = order;
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
