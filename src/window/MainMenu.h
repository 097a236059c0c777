// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QMenuBar>

// The menu bar: the application menu (About, Preferences, Quit) and the Edit menu, whose
// commands go to the text field that has the focus. Its titles follow the language.
class MainMenu : public QMenuBar {
    Q_OBJECT
public:
    explicit MainMenu(QWidget* parent = nullptr);
    // The View menu, after Edit, holding the window's commands.
    void setViewActions(const QList<QAction*>& actions);

Q_SIGNALS:
    void aboutRequested();
    void preferencesRequested();

protected:
    void changeEvent(QEvent* event) override;

private:
    void retranslate();

    QMenu* editMenu;
    QMenu* viewMenu = nullptr;
    // Each item with the key of its title.
    QList<std::pair<QAction*, const char*>> titled;
};
