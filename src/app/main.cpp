#include "app/AppController.h"

#include <QApplication>
#include <QMetaObject>

int main(int argc, char** argv) {
    // Launch arguments are kept as bytes: a folder name need not be UTF-8.
    QList<QByteArray> arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QByteArray(argv[i]);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Sizeloom"));
    QApplication::setQuitOnLastWindowClosed(false);

    AppController controller;
    Loc::current = AppController::defaultLang();
    controller.buildWindow();
    QMetaObject::invokeMethod(
        &controller,
        [&controller, arguments] { controller.applicationDidFinishLaunching(arguments); },
        Qt::QueuedConnection);
    return app.exec();
}
