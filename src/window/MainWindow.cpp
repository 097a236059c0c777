#include "window/MainWindow.h"

#include "platform/UserDefaults.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>

namespace {
const QString kFrameKey = QStringLiteral("SizeloomMain");

// The settings file is anyone's to edit: a frame is taken only where a screen can show
// it whole, so a crafted one cannot make a window larger than the desktop.
bool fitsAScreen(const QRect& frame) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    return std::ranges::any_of(screens, [&](const QScreen* screen) {
        return screen->availableGeometry().contains(frame);
    });
}
} // namespace

void MainWindow::restoreFrame() {
    const auto placeDefault = [this] {
        setWindowState(Qt::WindowNoState);
        resize(820, 600);
        if (const QScreen* screen = QApplication::primaryScreen())
            move(screen->availableGeometry().center() - rect().center());
    };
    placeDefault();
    const QByteArray saved = userDefaults()->value(kFrameKey).toByteArray();
    if (saved.isEmpty())
        return;
    if (!restoreGeometry(saved) || !fitsAScreen(geometry()))
        placeDefault();
}

void MainWindow::saveFrame() const {
    userDefaults()->setValue(kFrameKey, saveGeometry());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveFrame();
    event->accept();
    QApplication::quit();
}
