// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/UiFont.h"

#include <QApplication>
#include <QFontDatabase>

QFont uiFont(qreal size, QFont::Weight weight) {
    QFont font = QApplication::font();
    font.setPixelSize(qRound(size));
    font.setWeight(weight);
    return font;
}

QFont monoFont(qreal size) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(qRound(size));
    font.setWeight(QFont::Normal);
    return font;
}
