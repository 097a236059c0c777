// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QColor>
#include <QString>

class QPushButton;

// The one accent colour: title, row selection, share column, accent buttons,
// drop icon and volume bars.
QColor accentColor();

// Styles a push button as an accent button (accent face, white medium-weight title).
void accentize(QPushButton* button, const QString& title);

// The palette's secondary and tertiary text colours (the second and third level of
// emphasis below normal text).
QColor secondaryTextColor();
QColor tertiaryTextColor();

class QWidget;
// Sets the colour a label's text is drawn in.
void setTextColor(QWidget* widget, const QColor& color);
