// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/DropView.h"

#include "platform/FileUrl.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>

DropView::DropView(QWidget* parent) : QWidget(parent) {
    setAcceptDrops(true);
}

QByteArray DropView::firstLocalPath(const QMimeData& data) {
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            return localPathBytes(url);
    return {};
}

void DropView::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

void DropView::dropEvent(QDropEvent* event) {
    const QByteArray path = firstLocalPath(*event->mimeData());
    if (path.isEmpty()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT dropped(path);
}
