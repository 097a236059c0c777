// Copy and Copy Path: the item itself, or its path as text, on the clipboard.
#include "app/AppController.h"
#include "platform/FileClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QMimeData>

void AppController::ctxCopyFile() {
    if (!menuNode)
        return;
    QGuiApplication::clipboard()->setMimeData(fileCopyMimeData(menuNode->url).release());
    if (status)
        status->setText(t(QStringLiteral("copied")) + menuNode->name());
}

void AppController::ctxCopyPath() {
    if (!menuNode)
        return;
    // Clipboard text is Unicode: a path that is not UTF-8 goes as it is shown, each
    // byte that is not UTF-8 as U+FFFD. Copy keeps every byte (in the item's URI).
    const QString path = displayPath(menuNode->url);
    QGuiApplication::clipboard()->setText(path);
    if (status)
        status->setText(t(QStringLiteral("path_copied")) + path);
}
