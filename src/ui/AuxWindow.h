// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <Qt>

class QObject;
class QScreen;
class QWidget;

// A small top-level window's kind: titled and closable, not resizable.
inline constexpr Qt::WindowFlags kAuxWindowFlags =
    Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;

// A small top-level window, titled and closable but not resizable: it takes the size
// its layout asks for. Closing only hides it; it is deleted with owner.
QWidget* makeAuxWindow(QObject* owner);

// Centres the window on the screen, brings it to the front and gives it the focus.
void presentCentered(QWidget* window, QScreen* screen);
