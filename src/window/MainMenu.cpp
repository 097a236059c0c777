// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/MainMenu.h"

#include "text/Lang.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>

namespace {

using FieldCommand = void (*)(QLineEdit*);

struct EditItem {
    const char* key;
    QKeySequence::StandardKey shortcut;
    FieldCommand command;
};

constexpr EditItem kEditItems[] = {
    {"menu_cut", QKeySequence::Cut, [](QLineEdit* f) { f->cut(); }},
    {"menu_copy", QKeySequence::Copy, [](QLineEdit* f) { f->copy(); }},
    {"menu_paste", QKeySequence::Paste, [](QLineEdit* f) { f->paste(); }},
    {"menu_selectall", QKeySequence::SelectAll, [](QLineEdit* f) { f->selectAll(); }},
};

} // namespace

MainMenu::MainMenu(QWidget* parent) : QMenuBar(parent) {
    QMenu* appMenu = addMenu(QStringLiteral("Sizeloom"));
    QAction* about = appMenu->addAction(QString());
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, &MainMenu::aboutRequested);
    appMenu->addSeparator();
    QAction* prefs = appMenu->addAction(QString());
    prefs->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    prefs->setMenuRole(QAction::PreferencesRole);
    connect(prefs, &QAction::triggered, this, &MainMenu::preferencesRequested);
    appMenu->addSeparator();
    QAction* quit = appMenu->addAction(QString());
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);
    titled = {{about, "menu_about"}, {prefs, "menu_prefs"}, {quit, "menu_quit"}};

    editMenu = addMenu(QString());
    for (const EditItem& item : kEditItems) {
        QAction* action = editMenu->addAction(QString());
        action->setShortcut(item.shortcut);
        // Edit commands go to the text field that has the focus, wherever it is.
        connect(action, &QAction::triggered, this, [command = item.command] {
            if (auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget()))
                command(field);
        });
        titled.append({action, item.key});
    }
    retranslate();
}

void MainMenu::setViewActions(const QList<QAction*>& actions) {
    if (!viewMenu)
        viewMenu = addMenu(QString());
    viewMenu->clear();
    viewMenu->addActions(actions);
    retranslate();
}

void MainMenu::retranslate() {
    editMenu->setTitle(t(QStringLiteral("menu_edit")));
    if (viewMenu)
        viewMenu->setTitle(t(QStringLiteral("menu_view")));
    for (const auto& [action, key] : std::as_const(titled))
        action->setText(t(QLatin1String(key)));
}

void MainMenu::changeEvent(QEvent* event) {
    QMenuBar::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        retranslate();
}
