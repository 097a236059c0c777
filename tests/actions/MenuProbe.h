// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Drives the outline's right-click and keyboard menu the way the window system does,
// and describes what comes up.
#include "window/WindowFixture.h"

#include <QApplication>
#include <QMenu>

namespace menuprobe {

// Positions of the entries in the menu (separators count).
enum Entry { Reveal = 0, QuickLook = 1, GetInfo = 2, Copy = 8, CopyPath = 9, Share = 10 };

// A right-click at a point of the outline's viewport, through the window (so the
// platform's own right-click handling makes the context-menu request).
inline void rightClick(WindowFixture& f, const QPoint& viewportPoint) {
    QWidget* viewport = f.outline->viewport();
    QTest::mouseClick(f.window->windowHandle(), Qt::RightButton, {},
                      viewport->mapTo(f.window, viewportPoint));
}

// The window shown and open on the folder, every level listed and measured.
inline void openAndSettle(WindowFixture& f, const QByteArray& folder) {
    f.window->show();
    QVERIFY(QTest::qWaitForWindowExposed(f.window));
    f.openPath(folder);
    QVERIFY(f.settled());
}

inline QMenu* openMenu() {
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

inline void closeMenus() {
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

// Each entry's title, or "-" for a separator.
inline QStringList describe(const QMenu* menu) {
    QStringList out;
    for (const QAction* action : menu->actions())
        out << (action->isSeparator() ? QStringLiteral("-") : action->text());
    return out;
}

// Scrolled into view first, as a person would before clicking it.
inline QPoint centreOfRow(WindowFixture& f, const QModelIndex& index) {
    f.outline->scrollTo(index);
    return f.outline->visualRect(index).center();
}

// The entry of the row's menu, chosen (the menu closed first, as a click on it does).
inline void choose(WindowFixture& f, const QModelIndex& row, Entry entry) {
    QVERIFY(row.isValid());
    rightClick(f, centreOfRow(f, row));
    QMenu* menu = openMenu();
    QVERIFY(menu);
    QAction* action = menu->actions().at(entry);
    closeMenus();
    action->trigger();
}
inline void choose(WindowFixture& f, const QByteArray& name, Entry entry) {
    choose(f, f.childNamed(f.rootIndex(), name), entry);
}

} // namespace menuprobe
