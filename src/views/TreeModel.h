// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/ItemRef.h"
#include "core/TreeDisplay.h"
#include "views/RowIcons.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QSet>
#include <memory>

class SizeTree;

// The outline's model: its items are the entries of the size tree's index, the opened
// folder the one top-level row. A folder's rows are its entries as the model has taken
// them in: listed order while its sizes come in, largest first once they are in. Nothing
// is kept per row but the entry's id in its level's order. A folder of very many entries
// shows them a page at a time, the next page as the view scrolls to the end: the view
// keeps a record for every row it has, which for a million rows would cost more than
// the index itself.
class TreeModel : public QAbstractItemModel, public TreeDisplay {
    Q_OBJECT
public:
    enum Column { NameColumn, SizeColumn, ShareColumn, ColumnCount };
    static constexpr size_t kRowsPerPage = 100000;

    explicit TreeModel(SizeTree& tree, QObject* parent = nullptr);

    // The entry of an index (kNoEntry for the invalid index).
    EntryId entryAt(const QModelIndex& index) const;
    // The item of an index, for an action; invalid for the invalid index.
    ItemRef itemAt(const QModelIndex& index) const;
    // The entry's index in the given column, invalid when it has no row.
    QModelIndex indexOf(EntryId id, int column = NameColumn) const;
    // The index the rows are of.
    const std::shared_ptr<const SizeIndex>& shownIndex() const { return shown; }
    // The folder's level has entries beyond the rows it shows; the next page of them.
    bool hasMoreRows(const QModelIndex& folder) const;
    void showMoreRows(const QModelIndex& folder);
    // The view opened or closed a folder's row.
    void setExpanded(const QModelIndex& index, bool expanded);

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // TreeDisplay
    void showNewRoot(const std::shared_ptr<const SizeIndex>& index, EntryId root) override;
    bool isShown(EntryId folder) const override;
    bool hasRows(EntryId folder) const override { return levels.contains(folder); }
    void rowsAppended(EntryId folder, size_t first, size_t count) override;
    void redrawRow(EntryId id) override;
    void redrawRowAndChildren(EntryId folder) override;
    void reorderChildren(EntryId folder, const std::vector<EntryId>& order) override;
    void layOutNow() override { Q_EMIT layOutWanted(); }
    void dropChildren(EntryId folder) override;
    void redrawAll() override;

Q_SIGNALS:
    // The new root's row is to be shown open.
    void openWanted(const QModelIndex& index);
    // The views lay out the rows just appended now, not in a later pass.
    void layOutWanted();

private:
    // The rows of a folder that has them.
    struct Level {
        std::vector<EntryId> rows;
        // How many rows the view has asked for.
        size_t limit = kRowsPerPage;
        // The whole level in order, kept while it has more entries than rows; empty in
        // listing order, whose next rows the index gives.
        std::vector<EntryId> order;
        // Where each folder of the level is, for parent() and indexOf().
        QHash<EntryId, int> folderRows;
        // The sum of the known sizes of its rows: what shares are taken of while the
        // folder's own total is not in. Worked out again when needed after a change.
        mutable qint64 knownSum = 0;
        mutable bool knownSumValid = false;
    };
    void exposeChildren(EntryId folder, const QModelIndex& folderIndex);
    void appendRows(const QModelIndex& folderIndex, Level& level,
                    const std::vector<EntryId>& added);
    // The level's rows take the order given, every one of them once.
    void moveRows(EntryId folder, const QModelIndex& folderIndex, Level& level,
                  const std::vector<EntryId>& order);
    void forgetLevels(EntryId folder);
    int rowOf(EntryId id) const;
    QString sizeText(EntryId id) const;
    QString shareText(EntryId id) const;
    QString description(EntryId id) const;
    void redrawLevel(EntryId folder, const QModelIndex& folderIndex);

    SizeTree& tree;
    std::shared_ptr<const SizeIndex> shown;
    EntryId root = kNoEntry;
    QHash<EntryId, Level> levels;
    // Folders whose rows the view shows open.
    QSet<EntryId> expanded;
    RowIcons icons;
    bool resetting = false;
    // Rows are being added, removed or moved. Views and testers walk the model while a
    // change is announced and may ask for a folder's rows then: they get them once the
    // change is over, never as a change inside it.
    int changesUnderWay = 0;
    QSet<EntryId> fetchWhenDone;
    struct ChangeUnderWay;
    void fetchWaitingRows();
};
