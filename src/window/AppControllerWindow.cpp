// The main window's part of the controller: building the window and its two faces.
#include "actions/FileActions.h"
#include "app/AppController.h"
#include "window/DropView.h"
#include "window/MainWindow.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/TintedIcon.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"
#include "ui/UiFont.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>

namespace {

QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color) {
    QLabel* label = makePlainLabel(text);
    label->setFont(font);
    setTextColor(label, color);
    return label;
}

} // namespace

void AppController::buildWindow() {
    auto* main = new MainWindow;
    window = main;
    main->setWindowTitle(QStringLiteral("Sizeloom"));
    if (mainMenu)
        main->setMenuBar(mainMenu);

    auto* content = new DropView;
    main->setCentralWidget(content);
    content->onDrop = [self = QPointer<AppController>(this)](const QByteArray& path) {
        if (self)
            self->openHandedPath(path);
    };

    topBar = new QWidget;
    topBar->setFixedHeight(24);
    pathField = new QLineEdit;
    pathField->setPlaceholderText(t(QStringLiteral("path_placeholder")));
    connect(pathField, &QLineEdit::returnPressed, this, &AppController::pathEntered);

    upButton = new QPushButton;
    upButton->setIcon(tintedSvgIcon(QStringLiteral(":/ui/icons/up.svg"), {14, 14}, Qt::white));
    upButton->setToolTip(t(QStringLiteral("up_tooltip")));
    upButton->setAccessibleName(t(QStringLiteral("up_tooltip")));
    upButton->setFixedWidth(38);
    accentize(upButton, QString());
    upButton->setEnabled(false);
    connect(upButton, &QPushButton::clicked, this, &AppController::goUp);

    topBrowse = new QPushButton;
    accentize(topBrowse, t(QStringLiteral("choose_folder")));
    connect(topBrowse, &QPushButton::clicked, this, &AppController::browseClicked);

    auto* bar = new QHBoxLayout(topBar);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->setSpacing(0);
    bar->addWidget(pathField, 1, Qt::AlignVCenter);
    bar->addSpacing(8);
    bar->addWidget(upButton, 0, Qt::AlignVCenter);
    bar->addSpacing(6);
    bar->addWidget(topBrowse, 0, Qt::AlignVCenter);

    outline = new TreeOutlineView;
    model = new TreeModel(this, outline);
    outline->setModel(model);
    model->isExpanded = [view = outline](const QModelIndex& index) {
        return view->isExpanded(index);
    };
    model->expand = [view = outline](const QModelIndex& index) { view->expand(index); };
    model->layOut = [view = outline] { view->layOutNow(); };
    display = model;
    outline->setColumnWidths({420, 100, 230}, {200, 80, 140});
    actions = new FileActions(inbox, main, this);
    connect(actions, &FileActions::finished, this, &AppController::reportAction);
    actions->anchorAbove = [view = outline, model = model](const Node& node) {
        // A row gone meanwhile (its folder listed again): the outline's top-left corner.
        QRect row = view->rowRect(model->indexOf(node));
        if (row.isEmpty())
            row = QRect(0, 0, 1, 1);
        return view->viewport()->mapToGlobal(row.topLeft());
    };
    outline->onMenu = [view = outline, model = model,
                       actions = QPointer<FileActions>(actions)](int row) -> QMenu* {
        const NodePtr node = model->nodeAt(view->indexAtRow(row));
        return node && actions ? actions->menuFor(node, view) : nullptr;
    };
    outline->onPreviewKey = [view = outline, model = model,
                             actions = QPointer<FileActions>(actions)] {
        const QModelIndexList selected = view->selectionModel()->selectedRows();
        if (actions)
            actions->togglePreview(selected.isEmpty() ? NodePtr()
                                                      : model->nodeAt(selected.first()));
    };
    // Double-click or Enter on a row: the item in the file manager.
    connect(outline, &QAbstractItemView::activated, actions,
            [model = model, actions = actions](const QModelIndex& index) {
                if (const NodePtr node = model->nodeAt(index))
                    actions->reveal(node);
            });
    // A folder that finished sorting while closed shows its sorted order when opened.
    connect(outline, &QTreeView::expanded, model, [this](const QModelIndex& index) {
        model->redrawRowAndChildren(model->nodeAt(index));
    });
    scroll = outline;

    status = makeLabel(t(QStringLiteral("status_initial")), uiFont(11), secondaryTextColor());
    volumesPanel = makeVolumesPanel();
    emptyState = makeEmptyState();
    credit = makeLabel(QStringLiteral("Sizeloom \u00b7 made for full disks"), uiFont(10),
                       tertiaryTextColor());

    auto* browseFace = new QWidget;
    auto* browse = new QVBoxLayout(browseFace);
    browse->setContentsMargins(12, 10, 12, 6);
    browse->setSpacing(0);
    browse->addWidget(topBar);
    browse->addSpacing(10);
    browse->addWidget(outline, 1);
    browse->addSpacing(6);
    browse->addWidget(status);

    // The credit sits in the empty face's bottom right corner, over the drop area.
    auto* emptyFace = new QWidget;
    auto* empty = new QGridLayout(emptyFace);
    empty->setContentsMargins(0, 0, 0, 6);
    empty->addWidget(emptyState, 0, 0);
    auto* creditCorner = new QHBoxLayout;
    creditCorner->setContentsMargins(0, 0, 14, 2);
    creditCorner->addWidget(credit);
    empty->addLayout(creditCorner, 0, 0, Qt::AlignRight | Qt::AlignBottom);

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
    colorizeTitle();
    refreshVolumes();
    main->restoreFrame();
    main->show();
    main->raise();
    main->activateWindow();
}

void AppController::setEmpty(bool empty) {
    for (QWidget* view : {topBar, static_cast<QWidget*>(scroll), static_cast<QWidget*>(status)})
        if (view)
            view->setHidden(empty);
    for (QWidget* view : {emptyState, static_cast<QWidget*>(credit)})
        if (view)
            view->setHidden(!empty);
    if (topBar)
        topBar->parentWidget()->setHidden(empty);
    if (emptyState)
        emptyState->parentWidget()->setHidden(!empty);
    if (volumesPanel)
        volumesPanel->setHidden(false);
}

void AppController::colorizeTitle() {
    // The window manager draws the title bar, so there is no frame view to add an
    // accent title to; the plain title stays "Sizeloom".
    if (window)
        window->setWindowTitle(QStringLiteral("Sizeloom"));
}
