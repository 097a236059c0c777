// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/AppController.h"

#include "actions/FileActions.h"
#include "core/SizeTree.h"
#include "platform/FileUrl.h"
#include "ui/AuxWindow.h"
#include "window/AboutWindow.h"
#include "window/MainMenu.h"
#include "window/MainWindow.h"
#include "window/PreferencesWindow.h"

#include <QMetaObject>

AppController::AppController(QObject* parent)
    : QObject(parent), tree(std::make_unique<SizeTree>()),
      mainWindow(std::make_unique<MainWindow>(*tree)), menu(new MainMenu) {
    mainWindow->setMenuBar(menu);
    menu->setViewActions(mainWindow->viewActions());
    tree->setCountMounts(PreferencesWindow::countsMounts());
    connect(menu, &MainMenu::aboutRequested, this, &AppController::showAbout);
    connect(menu, &MainMenu::preferencesRequested, this, &AppController::showPreferences);
}

AppController::~AppController() {
    const QDeadlineTimer quitBy(2000);
    mainWindow->actions().stopJobs(quitBy);
    tree->setQuitDeadline(quitBy);
}

void AppController::launch(const QList<QByteArray>& arguments) {
    mainWindow->restoreFrame();
    mainWindow->bringToFront();
    // Once launching is over, as the desktop expects of an opened document.
    if (arguments.size() >= 2)
        QMetaObject::invokeMethod(
            this, [this, folder = arguments.at(1)] { mainWindow->openHandedPath(folder); },
            Qt::QueuedConnection);
}

void AppController::open(const QList<QUrl>& urls) {
    if (!urls.isEmpty())
        mainWindow->openHandedPath(localPathBytes(urls.first()));
}

void AppController::showAbout() {
    if (!about)
        about = std::make_unique<AboutWindow>();
    presentCentered(about.get(), mainWindow->screen());
}

void AppController::showPreferences() {
    if (!preferences) {
        preferences = std::make_unique<PreferencesWindow>();
        // The open folder is walked again the way it now counts.
        connect(preferences.get(), &PreferencesWindow::countMountsChanged, tree.get(),
                [tree = tree.get()](bool count) {
                    tree->setCountMounts(count);
                    tree->refresh();
                });
    }
    presentCentered(preferences.get(), mainWindow->screen());
}
