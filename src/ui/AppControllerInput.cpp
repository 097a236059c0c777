// Every way a folder reaches the window: typed path, chooser, launch argument,
// items handed over by the desktop, and the parent-folder button.
#include "app/AppController.h"
#include "core/PathInfo.h"
#include "platform/FileUrl.h"

#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>

void AppController::pathEntered() {
    // Blanks belong to the path: a trailing blank is a different name.
    const QByteArray path = expandTilde(QFile::encodeName(pathField->text()));
    if (isExistingDirectory(path))
        openPath(path);
    else
        status->setText(t(QStringLiteral("not_a_folder")) + displayPath(path));
}

void AppController::browseClicked() {
    const QString chosen =
        QFileDialog::getExistingDirectory(window, QString(), QString(), QFileDialog::ShowDirsOnly);
    if (!chosen.isEmpty())
        openPath(QFile::encodeName(chosen));
}

void AppController::goUp() {
    if (!rootNode)
        return;
    const QByteArray parent = deletingLastPathComponent(rootNode->url);
    if (parent == rootNode->url || !itemExists(parent))
        return;
    openPath(parent);
}

void AppController::applicationDidFinishLaunching(const QList<QByteArray>& arguments) {
    if (arguments.size() < 2)
        return;
    const QByteArray& path = arguments.at(1);
    if (isExistingDirectory(path))
        openPath(absolutePath(path));
}

void AppController::applicationOpen(const QList<QUrl>& urls) {
    if (!urls.isEmpty())
        openPath(localPathBytes(urls.first()));
}
