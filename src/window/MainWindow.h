#pragma once

#include <QMainWindow>

// The main window: its frame is kept between runs, and closing it ends the program.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    using QMainWindow::QMainWindow;

    void restoreFrame();
    void saveFrame() const;

protected:
    void closeEvent(QCloseEvent* event) override;
};
