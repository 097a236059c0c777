// After a language switch: every text on screen that came from the table, looked up
// anew. Parts of the window may be absent, so each view is checked first.
#include "actions/FileActions.h"
#include "app/AppController.h"
#include "window/StatusLine.h"
#include "ui/Style.h"
#include "views/TreeModel.h"
#include "views/TreeOutlineView.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

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
    // The model reads its column titles from the table each time they are shown.
    if (model)
        Q_EMIT model->headerDataChanged(Qt::Horizontal, 0, TreeModel::ColumnCount - 1);
    // Sizes still being measured read "Calculating…" in the language of the moment.
    if (outline)
        outline->viewport()->update();
    if (status) {
        // While the root is still being listed its line has no count to rebuild.
        if (!rootNode)
            status->setText(t(QStringLiteral("status_initial")));
        else if (rootNode->children)
            status->setText(countedStatusLine(*rootNode));
    }
    if (prefsLangLabel)
        prefsLangLabel->setText(t(QStringLiteral("prefs_language")));
    if (prefsWindow)
        prefsWindow->setWindowTitle(t(QStringLiteral("prefs_title")));
    if (volHeaderLabel)
        volHeaderLabel->setText(t(QStringLiteral("vol_header")));
    if (grantButton)
        grantButton->setText(t(QStringLiteral("vol_grant")));
    if (actions)
        actions->retranslate();
    refreshVolumes();
    buildMainMenu();
}
