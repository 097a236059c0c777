// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QUrl>
#include <memory>

class AboutWindow;
class MainMenu;
class MainWindow;
class PreferencesWindow;
class SizeTree;

// Makes the program's parts, connects them and owns them: the size tree, the main
// window with its menu, and the About and Preferences windows, made on first use.
class AppController : public QObject {
    Q_OBJECT
public:
    explicit AppController(QObject* parent = nullptr);
    // Measuring and the file actions are stopped and given two seconds in all.
    ~AppController() override;

    // The window on screen, then the folder named at launch (the first argument after
    // the program's own), when it is one.
    void launch(const QList<QByteArray>& arguments);
    // Items handed over by the desktop (Open With, a second launch): the first is opened.
    void open(const QList<QUrl>& urls);

    MainWindow& window() const { return *mainWindow; }

private:
    void showAbout();
    void showPreferences();

    const std::unique_ptr<SizeTree> tree;
    const std::unique_ptr<MainWindow> mainWindow;
    MainMenu* menu;
    std::unique_ptr<AboutWindow> about;
    std::unique_ptr<PreferencesWindow> preferences;
};
