#include "ui/TreeOutlineView.h"

#include "ui/OutlineDelegate.h"
#include "ui/Style.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QPainter>

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

void TreeOutlineView::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    if (index.isValid())
        setCurrentIndex(index);
    if (!onMenu)
        return;
    int row = -1;
    if (index.isValid()) {
        // Rows are counted from the top of the whole outline, open folders included.
        for (QModelIndex above = indexAbove(index); above.isValid(); above = indexAbove(above))
            ++row;
        ++row;
    }
    if (QMenu* menu = onMenu(row))
        menu->popup(event->globalPos());
}
