// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/AuxWindow.h"

#include "ui/AppIcon.h"
#include "ui/DeleteWith.h"

#include <QGuiApplication>
#include <QLayout>
#include <QScreen>
#include <QWidget>

QWidget* makeAuxWindow(QObject* owner) {
    auto* window = new QWidget(nullptr, kAuxWindowFlags);
    window->setWindowIcon(appIcon());
    deleteWith(owner, window);
    return window;
}

void presentCentered(QWidget* window, QScreen* screen) {
    // The size comes from the layout; settle it before placing the window.
    if (QLayout* layout = window->layout())
        layout->activate();
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const auto centre = [window, screen] {
        if (!screen)
            return;
        QRect frame = window->frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        window->move(frame.topLeft());
    };
    // The frame is only known once the window is on screen; placing it before too
    // keeps it from appearing elsewhere first.
    centre();
    window->show();
    centre();
    window->raise();
    window->activateWindow();
}
