// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/Style.h"

#include <QApplication>
#include <QPalette>
#include <QPushButton>
#include <QWidget>

QColor accentColor() {
    return QColor::fromRgbF(1.0f, 0.3607843137254902f, 0.12156862745098039f);
}

void accentize(QPushButton* button, const QString& title) {
    button->setText(title);
    QFont font = QApplication::font();
    font.setWeight(QFont::Medium);
    button->setFont(font);
    // A style sheet is the one way to colour a push button's face on every Qt style.
    const QColor face = accentColor();
    button->setStyleSheet(
        QStringLiteral("QPushButton { background-color: %1; color: white;"
                       " border: none; border-radius: 5px; padding: 3px 12px; }"
                       "QPushButton:pressed { background-color: %2; }"
                       "QPushButton:disabled { background-color: %3; }")
            .arg(face.name(), face.darker(120).name(),
                 QColor(face.red(), face.green(), face.blue(), 110).name(QColor::HexArgb)));
}

namespace {

QColor textWithAlpha(qreal alpha) {
    QColor color = QApplication::palette().color(QPalette::WindowText);
    color.setAlphaF(float(alpha));
    return color;
}

} // namespace

QColor secondaryTextColor() {
    return textWithAlpha(0.55);
}
QColor tertiaryTextColor() {
    return textWithAlpha(0.3);
}

void setTextColor(QWidget* widget, const QColor& color) {
    QPalette colors = widget->palette();
    colors.setColor(QPalette::WindowText, color);
    colors.setColor(QPalette::Text, color);
    widget->setPalette(colors);
}
