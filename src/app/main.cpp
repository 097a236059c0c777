// SPDX-License-Identifier: GPL-2.0-or-later
// Start-up: the application object, one running copy per session, the language, the
// menu and the window; then the folder named at launch, and folders handed over later.
#include "app/AppController.h"
#include "platform/LaunchArguments.h"
#include "platform/QuitSignals.h"
#include "platform/SingleInstance.h"
#include "ui/AppIcon.h"
#include "window/LanguageSwitch.h"
#include "window/MainWindow.h"

#include <QApplication>

int main(int argc, char** argv) {
    // Launch arguments are kept as bytes: a folder name need not be UTF-8. The desktop
    // hands files over as file:// URIs (%U), which become paths here.
    QList<QByteArray> arguments;
    for (int i = 0; i < argc; ++i)
        arguments << (i == 0 ? QByteArray(argv[i]) : argumentAsPath(argv[i]));

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Sizeloom"));
    QApplication::setDesktopFileName(QStringLiteral("org.sizeloom.Sizeloom"));
    QApplication::setWindowIcon(appIcon());
    // Only the main window ends the program; About or Preferences left open do not
    // keep it running, and closing them does not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    if (SingleInstance::forwardIfRunning(arguments.mid(1)))
        return 0;
    // A termination signal quits as the menu's Quit does, so that nothing half-made is
    // left behind.
    QuitSignals quitSignals;
    QObject::connect(&quitSignals, &QuitSignals::quitRequested, &app, &QCoreApplication::quit);
    SingleInstance instance;
    instance.registerPrimary();

    Loc::current = startupLanguage();
    AppController controller;
    QObject::connect(&instance, &SingleInstance::activationRequested, &controller,
                     [&controller] { controller.window().bringToFront(); });
    QObject::connect(&instance, &SingleInstance::openRequested, &controller, &AppController::open);
    controller.launch(arguments);
    return app.exec();
}
