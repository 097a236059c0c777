// After a language switch: every text on screen that came from the table, looked up
// anew. Parts of the window may be absent, so each view is checked first.
#include "app/AppController.h"
#include "text/StatusLine.h"
#include "ui/Style.h"

#include <QAbstractItemView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSet>

namespace {

// Item views read their column titles from the table each time; their models only
// need to say that the titles changed, once each (a tree and its header share one).
void retitleColumns(QWidget* window) {
    QSet<QAbstractItemModel*> models;
    for (QAbstractItemView* view : window->findChildren<QAbstractItemView*>())
        if (view->model())
            models.insert(view->model());
    for (QAbstractItemModel* itemModel : std::as_const(models))
        if (itemModel->columnCount() > 0)
            Q_EMIT itemModel->headerDataChanged(Qt::Horizontal, 0, itemModel->columnCount() - 1);
}

} // namespace

void AppController::relocalize() {
    if (pathField)
        pathField->setPlaceholderText(t(QStringLiteral("path_placeholder")));
    if (upButton) {
        upButton->setToolTip(t(QStringLiteral("up_tooltip")));
        upButton->setAccessibleName(t(QStringLiteral("up_tooltip")));
    }
    for (QPushButton* browse : {topBrowse, emptyBrowse})
        if (browse)
            accentize(browse, t(QStringLiteral("choose_folder")));
    if (emptyTitle)
        emptyTitle->setText(t(QStringLiteral("drop_here")));
    if (window)
        retitleColumns(window);
    if (status) {
        // While the root is still being listed its line has no count to rebuild.
        if (!rootNode)
            status->setText(t(QStringLiteral("status_initial")));
        else if (rootNode->children)
            status->setText(statusLineForRoot(*rootNode));
    }
    if (prefsLangLabel)
        prefsLangLabel->setText(t(QStringLiteral("prefs_language")));
    if (prefsWindow)
        prefsWindow->setWindowTitle(t(QStringLiteral("prefs_title")));
    if (volHeaderLabel)
        volHeaderLabel->setText(t(QStringLiteral("vol_header")));
    if (grantButton)
        grantButton->setText(t(QStringLiteral("vol_grant")));
    refreshVolumes();
    buildMainMenu();
}
