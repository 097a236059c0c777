// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/MainWindow.h"

#include "actions/ActionOutcome.h"
#include "actions/ErrorAlert.h"
#include "actions/FileActions.h"
#include "core/SizeTree.h"
#include "platform/BackgroundJob.h"
#include "platform/FileUrl.h"
#include "platform/ItemReach.h"
#include "platform/MountTable.h"
#include "platform/PathInfo.h"
#include "platform/Paths.h"
#include "platform/SystemReason.h"
#include "platform/UserDefaults.h"
#include "platform/VolumeCapacity.h"
#include "text/Lang.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/TintedIcon.h"
#include "ui/UiFont.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"
#include "views/VolumesPanel.h"
#include "window/DropView.h"
#include "window/StatusLine.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

namespace {

const QString kFrameKey = QStringLiteral("SizeloomMain");

QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color) {
    QLabel* label = makePlainLabel(text);
    label->setFont(font);
    setTextColor(label, color);
    return label;
}

// The settings file is anyone's to edit: a frame is taken only where a screen can show
// it whole, so a crafted one cannot make a window larger than the desktop.
bool fitsAScreen(const QRect& frame) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    return std::ranges::any_of(screens, [&](const QScreen* screen) {
        return screen->availableGeometry().contains(frame);
    });
}

} // namespace

MainWindow::MainWindow(SizeTree& sizeTree, QWidget* parent)
    : QMainWindow(parent), tree(sizeTree), fileActions(new FileActions(this, this)) {
    setWindowTitle(QStringLiteral("Sizeloom"));
    auto* content = new DropView;
    setCentralWidget(content);
    connect(content, &DropView::dropped, this, &MainWindow::openHandedPath);

    treeView = new TreeOutlineView;
    treeModel = new TreeModel(tree, treeView);
    treeView->setModel(treeModel);
    treeView->setColumnWidths({420, 100, 230}, {200, 80, 140});
    tree.setDisplay(treeModel);
    connect(&tree, &SizeTree::rootOpened, this, &MainWindow::showRoot);
    connect(&tree, &SizeTree::rootMeasured, this, &MainWindow::showTreeState);

    refreshAction = new QAction(this);
    refreshAction->setShortcut(QKeySequence(Qt::Key_F5));
    refreshAction->setEnabled(false);
    connect(refreshAction, &QAction::triggered, &tree, &SizeTree::refresh);
    stopAction = new QAction(this);
    stopAction->setShortcut(QKeySequence(Qt::Key_Escape));
    stopAction->setEnabled(false);
    connect(stopAction, &QAction::triggered, &tree, &SizeTree::stop);
    // On the window too, so that the keys work with or without a menu bar.
    addActions({refreshAction, stopAction});
    progressTick = new QTimer(this);
    progressTick->setInterval(200);
    // Only a walk of the whole opened folder speaks on the status line: one that follows
    // a file action leaves that action's outcome in place.
    connect(progressTick, &QTimer::timeout, this, [this] {
        if (tree.isWalkingRoot())
            showTreeState();
    });
    connect(&tree, &SizeTree::walkingChanged, this, [this](bool walking) {
        stopAction->setEnabled(walking);
        if (walking)
            progressTick->start();
        else
            progressTick->stop();
    });

    connect(fileActions, &FileActions::finished, this, &MainWindow::report);
    fileActions->anchorAbove = [view = treeView, model = treeModel](const ItemRef& item) {
        // A row gone meanwhile (its folder listed again): the outline's top-left corner.
        const bool same = item.index.lock() == model->shownIndex();
        QRect row = view->rowRect(same ? model->indexOf(item.id) : QModelIndex());
        if (row.isEmpty())
            row = QRect(0, 0, 1, 1);
        return view->viewport()->mapToGlobal(row.topLeft());
    };
    connect(treeView, &TreeOutlineView::menuRequested, this,
            [this](const QModelIndex& index, const QPoint& at) {
                if (const ItemRef item = treeModel->itemAt(index); item.isValid())
                    fileActions->menuFor(item, treeView)->popup(at);
            });
    connect(treeView, &TreeOutlineView::previewRequested, this, [this](const QModelIndex& index) {
        fileActions->togglePreview(treeModel->itemAt(index));
    });
    // Double-click or Enter on a row: the item in the file manager.
    connect(treeView, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        if (const ItemRef item = treeModel->itemAt(index); item.isValid())
            fileActions->reveal(item);
    });

    status = makeLabel(t(QStringLiteral("status_initial")), uiFont(11), secondaryTextColor());
    volumesPanel = new VolumesPanel;

    browseFace = new QWidget;
    auto* browse = new QVBoxLayout(browseFace);
    browse->setContentsMargins(12, 10, 12, 6);
    browse->setSpacing(0);
    browse->addWidget(makeTopBar());
    browse->addSpacing(10);
    browse->addWidget(treeView, 1);
    browse->addSpacing(6);
    browse->addWidget(status);

    emptyFace = makeEmptyFace();

    auto* panel = new QVBoxLayout;
    panel->setContentsMargins(12, 0, 12, 10);
    panel->addWidget(volumesPanel);

    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(browseFace, 1);
    column->addWidget(emptyFace, 1);
    column->addLayout(panel);

    setEmpty(true);
}

QWidget* MainWindow::makeTopBar() {
    auto* topBar = new QWidget;
    topBar->setObjectName(QStringLiteral("topBar"));
    topBar->setFixedHeight(24);
    path = new QLineEdit;
    connect(path, &QLineEdit::returnPressed, this, &MainWindow::pathEntered);

    upButton = new QPushButton;
    upButton->setObjectName(QStringLiteral("upButton"));
    upButton->setIcon(tintedSvgIcon(QStringLiteral(":/ui/icons/up.svg"), {14, 14}, Qt::white));
    upButton->setFixedWidth(38);
    accentize(upButton, QString());
    upButton->setEnabled(false);
    connect(upButton, &QPushButton::clicked, this, &MainWindow::goUp);

    topBrowse = new QPushButton;
    topBrowse->setObjectName(QStringLiteral("topBrowse"));
    connect(topBrowse, &QPushButton::clicked, this, &MainWindow::browse);

    auto* bar = new QHBoxLayout(topBar);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->setSpacing(0);
    bar->addWidget(path, 1, Qt::AlignVCenter);
    bar->addSpacing(8);
    bar->addWidget(upButton, 0, Qt::AlignVCenter);
    bar->addSpacing(6);
    bar->addWidget(topBrowse, 0, Qt::AlignVCenter);
    return topBar;
}

QWidget* MainWindow::makeEmptyFace() {
    // A large drop area with an icon, a title and a Choose Folder button.
    auto* container = new QWidget;
    container->setObjectName(QStringLiteral("emptyState"));
    auto* iconHolder = new QWidget;
    iconHolder->setFixedSize(100, 100);
    QLabel* icon = makePlainLabel({}, iconHolder);
    const qreal dpr = container->devicePixelRatioF();
    icon->setPixmap(tintedSvgPixmap(QStringLiteral(":/ui/icons/drop-tray.svg"), {64, 64},
                                    accentColor(), std::max<qreal>(dpr, 2.0)));
    icon->setGeometry(18, 18, 64, 64);

    emptyTitle = makePlainLabel();
    emptyTitle->setObjectName(QStringLiteral("emptyTitle"));
    emptyTitle->setFont(uiFont(17, QFont::DemiBold));
    emptyTitle->setAlignment(Qt::AlignCenter);
    setTextColor(emptyTitle, secondaryTextColor());

    emptyBrowse = new QPushButton;
    emptyBrowse->setObjectName(QStringLiteral("emptyBrowse"));
    emptyBrowse->setMinimumHeight(30);
    connect(emptyBrowse, &QPushButton::clicked, this, &MainWindow::browse);

    auto* stack = new QVBoxLayout(container);
    stack->setSpacing(0);
    stack->addStretch(1);
    stack->addWidget(iconHolder, 0, Qt::AlignHCenter);
    stack->addSpacing(8);
    stack->addWidget(emptyTitle, 0, Qt::AlignHCenter);
    stack->addSpacing(14);
    stack->addWidget(emptyBrowse, 0, Qt::AlignHCenter);
    stack->addStretch(1);
    // Centred 8 points above the middle.
    stack->addSpacing(16);

    // The credit sits in the empty face's bottom right corner, over the drop area.
    QLabel* credit = makeLabel(QStringLiteral("Sizeloom \u00b7 made for full disks"), uiFont(10),
                               tertiaryTextColor());
    credit->setObjectName(QStringLiteral("credit"));
    auto* face = new QWidget;
    auto* empty = new QGridLayout(face);
    empty->setContentsMargins(0, 0, 0, 6);
    empty->addWidget(container, 0, 0);
    auto* creditCorner = new QHBoxLayout;
    creditCorner->setContentsMargins(0, 0, 14, 2);
    creditCorner->addWidget(credit);
    empty->addLayout(creditCorner, 0, 0, Qt::AlignRight | Qt::AlignBottom);
    retranslate();
    return face;
}

void MainWindow::setEmpty(bool empty) {
    browseFace->setHidden(empty);
    emptyFace->setHidden(!empty);
}

void MainWindow::retranslate() {
    if (path)
        path->setPlaceholderText(t(QStringLiteral("path_placeholder")));
    if (upButton) {
        upButton->setToolTip(t(QStringLiteral("up_tooltip")));
        upButton->setAccessibleName(t(QStringLiteral("up_tooltip")));
    }
    for (QPushButton* button : {topBrowse, emptyBrowse})
        if (button)
            accentize(button, t(QStringLiteral("choose_folder")));
    if (emptyTitle)
        emptyTitle->setText(t(QStringLiteral("drop_here")));
    if (refreshAction) {
        refreshAction->setText(t(QStringLiteral("menu_refresh")));
        stopAction->setText(t(QStringLiteral("menu_stop")));
    }
    if (status)
        showTreeState();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
        fileActions->retranslate();
    }
}

void MainWindow::openFolder(const QByteArray& folder) {
    tree.open(folder);
}

void MainWindow::showRoot() {
    const QByteArray opened = tree.rootPath();
    path->setText(displayPath(opened));
    setEmpty(false);
    volumesPanel->refresh();
    upButton->setEnabled(deletingLastPathComponent(opened) != opened);
    refreshAction->setEnabled(true);
    // The top of a volume: what is found is also told as a share of its used space.
    volumeUsed.reset();
    if (mountSourceAt(opened))
        runInBackground<std::optional<VolumeCapacity>>(
            this, [opened] { return volumeCapacity(opened); },
            [this, opened](std::optional<VolumeCapacity> capacity) {
                if (capacity && opened == tree.rootPath())
                    volumeUsed = capacity->usedBytes;
            });
    showTreeState();
}

void MainWindow::showTreeState() {
    const std::shared_ptr<SizeIndex>& index = tree.index();
    if (!index) {
        status->setText(t(QStringLiteral("status_initial")));
        return;
    }
    const QByteArray opened = tree.rootPath();
    if (tree.wasStopped()) {
        status->setText(stoppedStatusLine(opened, index->itemsBelow(tree.root()),
                                          index->allocated(tree.root())));
    } else if (index->isMeasured(tree.root()) && !tree.isWalkingRoot()) {
        status->setText(countedStatusLine(opened, qint64(index->childCount(tree.root())),
                                          index->allocated(tree.root()), tree.measuredAt()));
    } else {
        // Walking, or about to: a new root's walk starts a moment after it is opened.
        std::optional<int> share;
        if (volumeUsed && *volumeUsed > 0)
            share = int(std::min<qint64>(100, tree.bytesFound() * 100 / *volumeUsed));
        status->setText(progressStatusLine(opened, tree.itemsWalked(), tree.bytesFound(), share));
    }
}

void MainWindow::openHandedPath(const QByteArray& handed) {
    // A relative path would be read against whatever folder the program runs in, and
    // one starting with "-" could pass for an option further on.
    const QByteArray absolute = absolutePath(handed);
    if (!handed.isEmpty() && isExistingDirectory(absolute)) {
        openFolder(absolute);
        return;
    }
    status->setText(t(QStringLiteral("not_a_folder")) + displayPath(handed));
}

void MainWindow::pathEntered() {
    // Blanks belong to the path: a trailing blank is a different name.
    openHandedPath(expandTilde(QFile::encodeName(path->text())));
}

void MainWindow::browse() {
    const QString chosen =
        QFileDialog::getExistingDirectory(this, QString(), QString(), QFileDialog::ShowDirsOnly);
    if (!chosen.isEmpty())
        openHandedPath(QFile::encodeName(chosen));
}

void MainWindow::goUp() {
    if (!tree.index())
        return;
    const QByteArray opened = tree.rootPath();
    const QByteArray parent = deletingLastPathComponent(opened);
    if (parent == opened || !itemExists(parent))
        return;
    openFolder(parent);
}

void MainWindow::report(const ActionOutcome& outcome) {
    const auto say = [this](const QString& text) { status->setText(text); };
    if (outcome.error == kItemChanged) {
        say(tf(QStringLiteral("item_changed"), {outcome.itemName}));
    } else if (outcome.error == ECANCELED) {
        // What the person cancelled is gone again; nothing to say.
    } else {
        switch (outcome.action) {
        case FileAction::Compress:
            if (outcome.underWay)
                say(t(QStringLiteral("compressing")) + outcome.itemName);
            else if (outcome.error)
                say(tf(QStringLiteral("compress_failed"),
                       {outcome.itemName,
                        systemReason(outcome.error, LangInfo::rawValue(Loc::current))}));
            else
                say(t(QStringLiteral("compressed")) + outcome.detail);
            break;
        case FileAction::Rename:
            if (outcome.error)
                showErrorAlert(this, t(QStringLiteral("rename_title")), outcome.itemName,
                               outcome.error);
            break;
        case FileAction::Duplicate:
            if (outcome.error)
                showErrorAlert(this, t(QStringLiteral("ctx_duplicate")), outcome.itemName,
                               outcome.error);
            break;
        case FileAction::Copy:
            say(t(QStringLiteral("copied")) + outcome.itemName);
            break;
        case FileAction::CopyPath:
            say(t(QStringLiteral("path_copied")) + outcome.detail);
            break;
        default:
            // The trash and the hand-offs to the desktop fail without a word.
            break;
        }
    }
    if (!outcome.reopen.isEmpty())
        openFolder(outcome.reopen);
    else if (outcome.changed.isValid())
        tree.refreshParent(outcome.changed);
}

void MainWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

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
