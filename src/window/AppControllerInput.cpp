// Every way a folder reaches the window: typed path, chooser, launch argument,
// items handed over by the desktop, and the parent-folder button.
#include "app/AppController.h"
#include "platform/PathInfo.h"
#include "platform/FileUrl.h"

#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>

void AppController::openHandedPath(const QByteArray& path) {
    // A relative path would be read against whatever folder the program runs in, and
    // one starting with "-" could pass for an option further on.
    const QByteArray absolute = absolutePath(path);
    if (!path.isEmpty() && isExistingDirectory(absolute)) {
        openPath(absolute);
        return;
    }
    if (status)
        status->setText(t(QStringLiteral("not_a_folder")) + displayPath(path));
}

void AppController::pathEntered() {
    // Blanks belong to the path: a trailing blank is a different name.
    openHandedPath(expandTilde(QFile::encodeName(pathField->text())));
}

void AppController::browseClicked() {
    const QString chosen =
        QFileDialog::getExistingDirectory(window, QString(), QString(), QFileDialog::ShowDirsOnly);
    if (!chosen.isEmpty())
        openHandedPath(QFile::encodeName(chosen));
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
    openHandedPath(arguments.at(1));
}

void AppController::applicationOpen(const QList<QUrl>& urls) {
    if (!urls.isEmpty())
        openHandedPath(localPathBytes(urls.first()));
}
