// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QMainWindow>
#include <optional>

class FileActions;
class QAction;
class QTimer;
class QLabel;
class QLineEdit;
class QPushButton;
class SizeTree;
class TreeModel;
class TreeOutlineView;
class VolumesPanel;
struct ActionOutcome;

// The main window. Empty, it offers a drop area and a folder chooser; browsing, it
// shows the path field, the outline of the size tree and the status line. The volumes
// panel sits at the bottom of both faces. A folder comes in typed, chosen, dropped or
// handed over; the window's frame is kept between runs, and closing it ends the program.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(SizeTree& tree, QWidget* parent = nullptr);

    // The folder opened as the root of the tree; the window shows it.
    void openFolder(const QByteArray& path);
    // A path handed in by the person or the desktop: made absolute, opened when it is a
    // folder, else answered in the status line with the tree left as it was.
    void openHandedPath(const QByteArray& path);
    // What an action came to, in the status line or an alert, and the tree brought up to
    // date with the disk: the one place where the window speaks of outcomes.
    void report(const ActionOutcome& outcome);

    FileActions& actions() const { return *fileActions; }
    // The View menu's commands: Refresh (F5) and Stop (Esc).
    QList<QAction*> viewActions() const { return {refreshAction, stopAction}; }
    TreeModel& model() const { return *treeModel; }
    TreeOutlineView& outline() const { return *treeView; }
    QLabel& statusLine() const { return *status; }
    QLineEdit& pathField() const { return *path; }
    VolumesPanel& volumes() const { return *volumesPanel; }

    // Out of the minimized state, shown, raised and given the focus.
    void bringToFront();

    void restoreFrame();
    void saveFrame() const;

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* makeTopBar();
    QWidget* makeEmptyFace();
    void setEmpty(bool empty);
    void retranslate();
    void showRoot();
    // The status line as the tree stands: walked, stopped or measured.
    void showTreeState();
    void pathEntered();
    void browse();
    void goUp();

    SizeTree& tree;
    FileActions* fileActions;
    TreeModel* treeModel = nullptr;
    TreeOutlineView* treeView = nullptr;
    QLineEdit* path = nullptr;
    QLabel* status = nullptr;
    VolumesPanel* volumesPanel = nullptr;
    QPushButton* upButton = nullptr;
    QPushButton* topBrowse = nullptr;
    QPushButton* emptyBrowse = nullptr;
    QLabel* emptyTitle = nullptr;
    QWidget* browseFace = nullptr;
    QWidget* emptyFace = nullptr;
    QAction* refreshAction = nullptr;
    QAction* stopAction = nullptr;
    // Tells the walk's progress a few times a second.
    QTimer* progressTick = nullptr;
    // The used space of the volume whose top is the opened folder.
    std::optional<qint64> volumeUsed;
};
