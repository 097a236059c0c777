#include "app/AppController.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

namespace {

QMenu* menuAt(QMenuBar* bar, int index) {
    const QList<QAction*> tops = bar->actions();
    return index < tops.size() ? tops[index]->menu() : nullptr;
}

QAction* itemAt(QMenuBar* bar, int menu, int item) {
    QMenu* m = menuAt(bar, menu);
    return m && item < m->actions().size() ? m->actions()[item] : nullptr;
}

// One line per item: its title, or "-" for a separator.
QStringList titles(QMenu* menu) {
    QStringList out;
    for (QAction* action : menu->actions())
        out << (action->isSeparator() ? QStringLiteral("-") : action->text());
    return out;
}

// A main window holding a text field and a button, shown and active.
struct ShownWindow {
    QLineEdit* field;
    QPushButton* button;
    explicit ShownWindow(AppController& controller) {
        controller.window = new QMainWindow;
        auto* central = new QWidget(controller.window);
        auto* layout = new QVBoxLayout(central);
        field = new QLineEdit(central);
        button = new QPushButton(QStringLiteral("x"), central);
        layout->addWidget(field);
        layout->addWidget(button);
        controller.window->setCentralWidget(central);
        controller.buildMainMenu();
        controller.window->show();
        controller.window->activateWindow();
    }
};

} // namespace

class TestMainMenu : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void cleanup() { Loc::current = Lang::en; }

    void titlesInEachLanguage_data() {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QStringList>("appMenu");
        QTest::addColumn<QString>("editTitle");
        QTest::addColumn<QStringList>("editMenu");
        QTest::newRow("en") << "en"
                            << QStringList{"About Sizeloom", "-", "Preferences…", "-",
                                           "Quit Sizeloom"}
                            << "Edit" << QStringList{"Cut", "Copy", "Paste", "Select All"};
        QTest::newRow("de") << "de"
                            << QStringList{"Über Sizeloom", "-", "Einstellungen…", "-",
                                           "Sizeloom beenden"}
                            << "Bearbeiten"
                            << QStringList{"Ausschneiden", "Kopieren", "Einsetzen",
                                           "Alles auswählen"};
        QTest::newRow("ja") << "ja"
                            << QStringList{"Sizeloom について", "-", "環境設定…", "-",
                                           "Sizeloom を終了"}
                            << "編集"
                            << QStringList{"カット", "コピー", "ペースト", "すべてを選択"};
    }
    void titlesInEachLanguage() {
        QFETCH(QString, lang);
        QFETCH(QStringList, appMenu);
        QFETCH(QString, editTitle);
        QFETCH(QStringList, editMenu);
        Loc::current = *LangInfo::fromRawValue(lang);
        AppController controller;
        controller.buildMainMenu();
        QMenuBar* bar = controller.mainMenu;
        QVERIFY(bar);
        QCOMPARE(bar->actions().size(), 2);
        QCOMPARE(menuAt(bar, 0)->title(), QStringLiteral("Sizeloom"));
        QCOMPARE(titles(menuAt(bar, 0)), appMenu);
        QCOMPARE(menuAt(bar, 1)->title(), editTitle);
        QCOMPARE(titles(menuAt(bar, 1)), editMenu);
    }

    void shortcutsAndRoles_data() {
        QTest::addColumn<int>("menu");
        QTest::addColumn<int>("item");
        QTest::addColumn<QKeySequence>("shortcut");
        QTest::addColumn<int>("role");
        QTest::newRow("about") << 0 << 0 << QKeySequence() << int(QAction::AboutRole);
        QTest::newRow("prefs") << 0 << 2 << QKeySequence(QStringLiteral("Ctrl+,"))
                               << int(QAction::PreferencesRole);
        QTest::newRow("quit") << 0 << 4 << QKeySequence(QStringLiteral("Ctrl+Q"))
                              << int(QAction::QuitRole);
        QTest::newRow("cut") << 1 << 0 << QKeySequence(QStringLiteral("Ctrl+X"))
                             << int(QAction::TextHeuristicRole);
        QTest::newRow("copy") << 1 << 1 << QKeySequence(QStringLiteral("Ctrl+C"))
                              << int(QAction::TextHeuristicRole);
        QTest::newRow("paste") << 1 << 2 << QKeySequence(QStringLiteral("Ctrl+V"))
                               << int(QAction::TextHeuristicRole);
        QTest::newRow("select all")
            << 1 << 3 << QKeySequence(QStringLiteral("Ctrl+A")) << int(QAction::TextHeuristicRole);
    }
    void shortcutsAndRoles() {
        QFETCH(int, menu);
        QFETCH(int, item);
        QFETCH(QKeySequence, shortcut);
        QFETCH(int, role);
        AppController controller;
        controller.buildMainMenu();
        QAction* action = itemAt(controller.mainMenu, menu, item);
        QVERIFY(action);
        QCOMPARE(action->shortcut(), shortcut);
        QCOMPARE(int(action->menuRole()), role);
    }

    // Each build makes a new bar; the window shows the newest and the old one goes.
    void rebuiltWholeInTheWindow() {
        AppController controller;
        ShownWindow shown(controller);
        QPointer<QMenuBar> first = controller.mainMenu;
        QCOMPARE(controller.window->menuBar(), first.data());
        Loc::current = Lang::fr;
        controller.buildMainMenu();
        QVERIFY(controller.mainMenu != first);
        QCOMPARE(controller.window->menuBar(), controller.mainMenu);
        QCOMPARE(menuAt(controller.mainMenu, 1)->title(), QStringLiteral("Édition"));
        QTRY_VERIFY(first.isNull());
        delete controller.window;
    }

    // Built before the window exists: kept until the window adopts it, replaced whole
    // if rebuilt meanwhile.
    void keptUntilTheWindowAdoptsIt() {
        AppController controller;
        controller.buildMainMenu();
        QPointer<QMenuBar> early = controller.mainMenu;
        QVERIFY(early && !early->parent());
        controller.buildMainMenu();
        QVERIFY(early.isNull());
        QPointer<QMenuBar> adopted = controller.mainMenu;
        controller.window = new QMainWindow;
        controller.window->setMenuBar(adopted);
        QCOMPARE(controller.window->menuBar(), adopted.data());
        delete controller.window;
        QVERIFY(adopted.isNull());
    }

    void editItemsActOnTheFocusedField() {
        AppController controller;
        ShownWindow shown(controller);
        QVERIFY(QTest::qWaitForWindowActive(controller.window));
        shown.field->setText(QStringLiteral("/srv/media"));
        shown.field->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), shown.field);
        QApplication::clipboard()->clear();

        itemAt(controller.mainMenu, 1, 3)->trigger(); // select all
        QCOMPARE(shown.field->selectedText(), QStringLiteral("/srv/media"));
        itemAt(controller.mainMenu, 1, 0)->trigger(); // cut
        QCOMPARE(shown.field->text(), QString());
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("/srv/media"));
        itemAt(controller.mainMenu, 1, 2)->trigger(); // paste
        QCOMPARE(shown.field->text(), QStringLiteral("/srv/media"));
        shown.field->setSelection(5, 5);
        itemAt(controller.mainMenu, 1, 1)->trigger(); // copy
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("media"));
        QCOMPARE(shown.field->text(), QStringLiteral("/srv/media"));
        delete controller.window;
    }

    // With the focus elsewhere the edit items leave every field alone.
    void editItemsNeedAFocusedField() {
        AppController controller;
        ShownWindow shown(controller);
        QVERIFY(QTest::qWaitForWindowActive(controller.window));
        shown.field->setText(QStringLiteral("keep"));
        shown.field->selectAll();
        shown.button->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), shown.button);
        QApplication::clipboard()->setText(QStringLiteral("before"));
        itemAt(controller.mainMenu, 1, 0)->trigger();
        itemAt(controller.mainMenu, 1, 2)->trigger();
        QCOMPARE(shown.field->text(), QStringLiteral("keep"));
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("before"));
        delete controller.window;
    }

    void keysReachTheMenu() {
        AppController controller;
        ShownWindow shown(controller);
        QVERIFY(QTest::qWaitForWindowActive(controller.window));
        shown.button->setFocus();
        QTest::keySequence(controller.window, QKeySequence(QStringLiteral("Ctrl+,")));
        QVERIFY(controller.prefsWindow);
        QTRY_VERIFY(controller.prefsWindow->isVisible());
        controller.prefsWindow->close();

        // Ctrl+A, then Ctrl+X in the focused field.
        shown.field->setText(QStringLiteral("abc"));
        shown.field->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), shown.field);
        QTest::keySequence(controller.window, QKeySequence::SelectAll);
        QTest::keySequence(controller.window, QKeySequence::Cut);
        QCOMPARE(shown.field->text(), QString());
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("abc"));
        delete controller.window;
    }

    void aboutItemOpensAbout() {
        AppController controller;
        controller.buildMainMenu();
        itemAt(controller.mainMenu, 0, 0)->trigger();
        QVERIFY(controller.aboutWindow);
        QTRY_VERIFY(controller.aboutWindow->isVisible());
    }

    // Last: Ctrl+Q ends the event loop the way quitting the program does.
    void quitEndsTheEventLoop() {
        AppController controller;
        ShownWindow shown(controller);
        QVERIFY(QTest::qWaitForWindowActive(controller.window));
        QSignalSpy aboutToQuit(qApp, &QCoreApplication::aboutToQuit);
        QTimer::singleShot(0, controller.window, [&controller] {
            QTest::keySequence(controller.window, QKeySequence(QStringLiteral("Ctrl+Q")));
        });
        // Only reached if the key did nothing.
        QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(aboutToQuit.size(), 1);
        delete controller.window;
    }
};

QTEST_MAIN(TestMainMenu)
#include "tst_mainmenu.moc"
