#pragma once

#include <QTreeView>
#include <functional>

class QMenu;

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
    // Given the row of a right-click (-1 for none), or of the Menu key or Shift+F10,
    // the menu to show there, if any.
    std::function<QMenu*(int row)> onMenu;
    // Space on the selected row: its preview opens, or closes.
    std::function<void()> onPreviewKey;

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

protected:
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
    QList<int> minimumWidths;
};
