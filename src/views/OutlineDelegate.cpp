// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/OutlineDelegate.h"

#include "views/TreeOutlineView.h"

QSize OutlineDelegate::sizeHint(const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    return {QStyledItemDelegate::sizeHint(option, index).width(), TreeOutlineView::kRowHeight};
}

void OutlineDelegate::initStyleOption(QStyleOptionViewItem* option,
                                      const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->decorationSize = QSize(16, 16);
    option->textElideMode = index.column() == 0 ? Qt::ElideRight : Qt::ElideNone;
}
