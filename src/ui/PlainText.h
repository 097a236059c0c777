// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

class QLabel;
class QWidget;

// Names, paths and labels come from the disk, so anything may be in them: markup that
// a rich-text guess would load images for, "&" that a button takes for a shortcut,
// "[*]" that a window title takes for its modified mark. These show them as they are.

// A label that never interprets its text.
QLabel* makePlainLabel(const QString& text = {}, QWidget* parent = nullptr);

// A tooltip that shows the text as it is (tooltips guess rich text otherwise).
QString plainToolTip(const QString& text);

// A window title that shows the text as it is.
QString plainWindowTitle(const QString& text);
