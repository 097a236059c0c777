// The menu bar: the application menu and the Edit menu, rebuilt whole in the current
// language. Without a global menu bar it sits in the main window.
#include "app/AppController.h"
#include "ui/DeleteWith.h"

#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>

namespace {

using FieldCommand = void (*)(QLineEdit*);

// Edit commands go to the text field that has the focus, wherever it is.
void addEditItem(QMenu* menu, const char* key, QKeySequence::StandardKey shortcut,
                 FieldCommand command) {
    QAction* action = menu->addAction(t(QLatin1String(key)));
    action->setShortcut(shortcut);
    QObject::connect(action, &QAction::triggered, menu, [command] {
        if (auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget()))
            command(field);
    });
}

} // namespace

void AppController::buildMainMenu() {
    auto* bar = new QMenuBar;

    QMenu* appMenu = bar->addMenu(QStringLiteral("Sizeloom"));
    QAction* about = appMenu->addAction(t(QStringLiteral("menu_about")));
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, &AppController::showAbout);
    appMenu->addSeparator();
    QAction* prefs = appMenu->addAction(t(QStringLiteral("menu_prefs")));
    prefs->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    prefs->setMenuRole(QAction::PreferencesRole);
    connect(prefs, &QAction::triggered, this, &AppController::showPrefs);
    appMenu->addSeparator();
    QAction* quit = appMenu->addAction(t(QStringLiteral("menu_quit")));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);

    QMenu* editMenu = bar->addMenu(t(QStringLiteral("menu_edit")));
    addEditItem(editMenu, "menu_cut", QKeySequence::Cut, [](QLineEdit* f) { f->cut(); });
    addEditItem(editMenu, "menu_copy", QKeySequence::Copy, [](QLineEdit* f) { f->copy(); });
    addEditItem(editMenu, "menu_paste", QKeySequence::Paste, [](QLineEdit* f) { f->paste(); });
    addEditItem(editMenu, "menu_selectall", QKeySequence::SelectAll,
                [](QLineEdit* f) { f->selectAll(); });

    QMenuBar* previous = mainMenu;
    const bool previousUnowned = previous && !previous->parent();
    mainMenu = bar;
    if (window)
        window->setMenuBar(bar); // deletes the bar it held before
    else
        deleteWith(this, bar); // until the window adopts it
    if (previousUnowned)
        delete previous;
}
