#include "volumes/SystemFont.h"

#include <QGuiApplication>

QFont systemFont(qreal points, QFont::Weight weight) {
    QFont font = QGuiApplication::font();
    font.setPointSizeF(points);
    font.setWeight(weight);
    return font;
}
