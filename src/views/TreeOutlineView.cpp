// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/TreeOutlineView.h"

#include "ui/Style.h"
#include "views/OutlineDelegate.h"
#include "views/TreeModel.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

TreeOutlineView::TreeOutlineView(QWidget* parent) : QTreeView(parent) {
    setItemDelegate(new OutlineDelegate(this));
    setUniformRowHeights(true);
    setIndentation(16);
    setAlternatingRowColors(true);
    setTextElideMode(Qt::ElideRight);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setAllColumnsShowFocus(true);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setExpandsOnDoubleClick(false);
    // The band is painted by drawRow; the style's own selection fill stays invisible
    // and selected text turns white so that it reads on the band.
    QPalette colors = palette();
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        colors.setColor(group, QPalette::Highlight, Qt::transparent);
        colors.setColor(group, QPalette::HighlightedText, Qt::white);
    }
    setPalette(colors);
    connect(header(), &QHeaderView::sectionResized, this, &TreeOutlineView::keepMinimumWidth);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            &TreeOutlineView::showRowsComingIntoView);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this,
            &TreeOutlineView::showRowsComingIntoView);
}

void TreeOutlineView::showRowsComingIntoView() {
    auto* tree = qobject_cast<TreeModel*>(model());
    if (!tree)
        return;
    // The lowest row on screen; a level showing a page of its entries, whose end is on
    // screen, gets its next page.
    QModelIndex lowest;
    for (int y = viewport()->height() - 1; y >= 0 && !lowest.isValid(); y -= kRowHeight)
        lowest = indexAt(QPoint(0, y)).siblingAtColumn(0);
    const int rowsOnScreen = viewport()->height() / kRowHeight + 1;
    for (QModelIndex at = lowest; at.isValid(); at = at.parent()) {
        const QModelIndex folder = at.parent();
        if (at.row() + rowsOnScreen >= tree->rowCount(folder) && tree->hasMoreRows(folder))
            tree->showMoreRows(folder);
    }
}

void TreeOutlineView::setModel(QAbstractItemModel* model) {
    QTreeView::setModel(model);
    if (auto* tree = qobject_cast<TreeModel*>(model)) {
        connect(tree, &TreeModel::openWanted, this, &QTreeView::expand);
        connect(tree, &TreeModel::layOutWanted, this, &TreeOutlineView::layOutNow);
        connect(this, &QTreeView::expanded, tree,
                [tree](const QModelIndex& index) { tree->setExpanded(index, true); });
        connect(this, &QTreeView::collapsed, tree,
                [tree](const QModelIndex& index) { tree->setExpanded(index, false); });
    }
}

void TreeOutlineView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() != QEvent::LanguageChange || !model())
        return;
    // The column titles come from the table each time they are asked for; sizes still
    // being measured read "Calculating…" in the language of the moment.
    Q_EMIT model()->headerDataChanged(Qt::Horizontal, 0, model()->columnCount() - 1);
    viewport()->update();
}

void TreeOutlineView::setColumnWidths(const QList<int>& widths, const QList<int>& minimums) {
    minimumWidths = minimums;
    header()->setStretchLastSection(false);
    for (int column = 0; column < widths.size(); ++column)
        header()->resizeSection(column, widths[column]);
}

void TreeOutlineView::keepMinimumWidth(int section, int, int newSize) {
    if (section < minimumWidths.size() && newSize < minimumWidths[section])
        header()->resizeSection(section, minimumWidths[section]);
}

void TreeOutlineView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const bool selected =
        selectionModel() && selectionModel()->isRowSelected(index.row(), index.parent());
    if (!selected) {
        QTreeView::drawRow(painter, option, index);
        return;
    }
    // Row background first, then the band over it, then the cells without any
    // background of their own so the band shows through.
    QStyleOptionViewItem plain = option;
    const int visualRow = (option.rect.y() + verticalOffset()) / kRowHeight;
    const bool alternate = alternatingRowColors() && visualRow % 2;
    painter->fillRect(QRect(0, option.rect.y(), viewport()->width(), option.rect.height()),
                      palette().brush(alternate ? QPalette::AlternateBase : QPalette::Base));
    QColor band = accentColor();
    band.setAlphaF(0.9f);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(band);
    const QRectF row(0, option.rect.y(), viewport()->width(), option.rect.height());
    painter->drawRoundedRect(row.adjusted(3, 1, -3, -1), 5, 5);
    painter->restore();
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        plain.palette.setBrush(group, QPalette::Base, Qt::transparent);
        plain.palette.setBrush(group, QPalette::AlternateBase, Qt::transparent);
    }
    QTreeView::drawRow(painter, plain, index);
}

int TreeOutlineView::rowAt(const QPoint& viewportPoint) const {
    if (!indexAt(QPoint(0, viewportPoint.y())).isValid())
        return -1;
    return (viewportPoint.y() + verticalOffset()) / kRowHeight;
}

QModelIndex TreeOutlineView::indexAtRow(int row) const {
    if (row < 0)
        return {};
    // Any column will do to find the row; x 0 is always inside one.
    return indexAt(QPoint(0, row * kRowHeight - verticalOffset())).siblingAtColumn(0);
}

int TreeOutlineView::rowOf(const QModelIndex& index) const {
    const QRect rect = index.isValid() ? visualRect(index.siblingAtColumn(0)) : QRect();
    if (rect.isEmpty())
        return -1;
    return (rect.top() + verticalOffset()) / kRowHeight;
}

QRect TreeOutlineView::rowRect(const QModelIndex& index) const {
    if (rowOf(index) < 0)
        return {};
    return {0, visualRect(index.siblingAtColumn(0)).top(), viewport()->width(), kRowHeight};
}

void TreeOutlineView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard) {
        showMenuForCurrentRow();
        return;
    }
    // A right-click: the row under the pointer becomes the only selected row.
    const int row = rowAt(event->pos());
    const QModelIndex index = indexAtRow(row);
    if (index.isValid())
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                     QItemSelectionModel::Rows);
    if (index.isValid())
        Q_EMIT menuRequested(index, event->globalPos());
}

void TreeOutlineView::showMenuForCurrentRow() {
    const QModelIndex current = currentIndex();
    const int row = rowOf(current);
    if (row < 0)
        return;
    selectionModel()->setCurrentIndex(current, QItemSelectionModel::ClearAndSelect |
                                                   QItemSelectionModel::Rows);
    scrollTo(current);
    const QRect rect = visualRect(current.siblingAtColumn(0));
    Q_EMIT menuRequested(current.siblingAtColumn(0),
                         viewport()->mapToGlobal(QPoint(rect.left() + kRowHeight, rect.bottom())));
}

void TreeOutlineView::mousePressEvent(QMouseEvent* event) {
    // The right button only asks for the menu; the menu request decides what is
    // selected (the view would otherwise clear the selection below the last row).
    if (event->button() == Qt::RightButton) {
        event->accept();
        return;
    }
    QTreeView::mousePressEvent(event);
}

void TreeOutlineView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                  const QList<int>& roles) {
    // A large level changes as a whole at times (its shares, once its folder's total is
    // in). Qt would work out, one changed row after another, which of them are on
    // screen; with rows of one height, repainting what is on screen costs far less.
    constexpr int kManyRows = 256;
    if (bottomRight.row() - topLeft.row() < kManyRows || topLeft.parent() != bottomRight.parent()) {
        QTreeView::dataChanged(topLeft, bottomRight, roles);
        return;
    }
    viewport()->update();
    // Screen readers hear of the change as the view would have told them.
    if (QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent change(this,
                                                QAccessibleTableModelChangeEvent::DataChanged);
        change.setFirstRow(topLeft.row());
        change.setFirstColumn(topLeft.column());
        change.setLastRow(bottomRight.row());
        change.setLastColumn(bottomRight.column());
        QAccessible::updateAccessibility(&change);
    }
}

void TreeOutlineView::keyPressEvent(QKeyEvent* event) {
    const bool menuKey = event->key() == Qt::Key_Menu && event->modifiers() == Qt::NoModifier;
    const bool shiftF10 = event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier;
    if (menuKey || shiftF10) {
        showMenuForCurrentRow();
        return;
    }
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) {
        const QModelIndexList selected = selectionModel()->selectedRows();
        Q_EMIT previewRequested(selected.isEmpty() ? QModelIndex() : selected.first());
        return;
    }
    QTreeView::keyPressEvent(event);
}
