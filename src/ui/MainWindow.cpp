#include "ui/MainWindow.h"

#include "app/UserDefaults.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>

namespace {
const QString kFrameKey = QStringLiteral("SizeloomMain");
}

void MainWindow::restoreFrame() {
    resize(820, 600);
    if (const QScreen* screen = QApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    const QByteArray saved = userDefaults()->value(kFrameKey).toByteArray();
    if (!saved.isEmpty())
        restoreGeometry(saved);
}

void MainWindow::saveFrame() const {
    userDefaults()->setValue(kFrameKey, saveGeometry());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveFrame();
    event->accept();
    QApplication::quit();
}
