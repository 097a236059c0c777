// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QTreeView>

// The outline: a tree of the size tree's rows, the selection drawn as a rounded
// accent band, per-column minimum widths, and a hook for the right-click menu.
class TreeOutlineView : public QTreeView {
    Q_OBJECT
public:
    explicit TreeOutlineView(QWidget* parent = nullptr);

    // The layout Qt would otherwise do in a later pass of the event loop, done now.
    void layOutNow() { executeDelayedItemsLayout(); }
    // Sets the three columns' widths and their minimums.
    void setColumnWidths(const QList<int>& widths, const QList<int>& minimums);

    static constexpr int kRowHeight = 22;

    // Rows are counted from the top of the whole outline, open folders' rows included;
    // every row is kRowHeight high, so a row and a position map onto each other
    // without walking the rows.
    // The row at a point of the viewport, or -1 below the last row.
    int rowAt(const QPoint& viewportPoint) const;
    // The index (first column) of a row, invalid when there is no such row.
    QModelIndex indexAtRow(int row) const;
    // The row of a shown index, -1 when it has none (not in the model, or inside a
    // closed folder).
    int rowOf(const QModelIndex& index) const;
    // The whole row of a shown index across the viewport, in viewport coordinates;
    // empty when it has no row.
    QRect rowRect(const QModelIndex& index) const;

    // Sets the model, and follows the folders it asks to open and to lay out at once.
    void setModel(QAbstractItemModel* model) override;

Q_SIGNALS:
    // A right-click on a row, or the Menu key or Shift+F10 on the current one: the menu
    // for the row's item, to show at that global point.
    void menuRequested(const QModelIndex& index, const QPoint& at);
    // Space: the selected row's preview opens, or closes (an invalid index: none selected).
    void previewRequested(const QModelIndex& index);

protected:
    void changeEvent(QEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles = {}) override;

private:
    // The menu for the current row, shown at that row (keyboard users have no pointer
    // position to show it at).
    void showMenuForCurrentRow();
    void keepMinimumWidth(int section, int oldSize, int newSize);
    // A level shown a page at a time gets its next page as its last row comes on screen.
    void showRowsComingIntoView();
    QList<int> minimumWidths;
};
