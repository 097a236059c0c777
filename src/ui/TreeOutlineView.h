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

    // Sets the three columns' widths and their minimums.
    void setColumnWidths(const QList<int>& widths, const QList<int>& minimums);
    // Given the row under a right-click (-1 for none), the menu to show, if any.
    std::function<QMenu*(int row)> onMenu;

    static constexpr int kRowHeight = 22;

protected:
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void keepMinimumWidth(int section, int oldSize, int newSize);
    QList<int> minimumWidths;
};
