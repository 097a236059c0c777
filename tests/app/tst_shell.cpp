// SPDX-License-Identifier: GPL-2.0-or-later
// The application shell, wired as the program runs it: the menu bar, Preferences, About,
// the language switch, the launch argument and the items the desktop hands over.
#include "app/AppController.h"
#include "platform/UserDefaults.h"
#include "text/SizeText.h"
#include "window/AboutWindow.h"
#include "window/MainMenu.h"
#include "window/PreferencesWindow.h"
#include "window/WindowFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QRadioButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

namespace {

// Each menu's title, then its items: text and shortcut, or "-" for a separator.
QStringList describe(QMenuBar* bar) {
    QStringList out;
    for (QAction* top : bar->actions()) {
        out << top->menu()->title() + ':';
        for (QAction* item : top->menu()->actions())
            out << (item->isSeparator()
                        ? QStringLiteral("-")
                        : (item->text() + ' ' + item->shortcut().toString()).trimmed());
    }
    return out;
}

QStringList checkedTitles(const QList<QRadioButton*>& radios) {
    QStringList out;
    for (QRadioButton* radio : radios)
        if (radio->isChecked())
            out << radio->text();
    return out;
}

QPoint centreOfScreen() {
    return QGuiApplication::primaryScreen()->availableGeometry().center();
}

// The program as main() wires it, and what its shell shows.
struct Shell {
    AppController c;
    MainWindow& window = c.window();
    QMenuBar* menu = window.menuBar();

    QAction* item(int menuIndex, int itemIndex) const {
        return menu->actions().at(menuIndex)->menu()->actions().at(itemIndex);
    }
    void showAbout() const { item(0, 0)->trigger(); }
    void showPrefs() const { item(0, 2)->trigger(); }
    template <typename T> static T* shown() {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (auto* window = qobject_cast<T*>(top))
                return window;
        return nullptr;
    }
};

} // namespace

class TestShell : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;

private Q_SLOTS:
    void initTestCase() {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(tmp.isValid());
    }
    void init() {
        Loc::current = Lang::en;
        userDefaults()->clear();
    }

    // After a switch every text of the window, its volume rows and its menu is in the
    // new language.
    void everyTextFollowsTheSwitch() {
        Shell shell;
        MainWindow& window = shell.window;
        window.openFolder(QFile::encodeName(tmp.path()));
        QTRY_VERIFY(window.statusLine().text().contains("Total"));
        QSignalSpy headers(&window.model(), &QAbstractItemModel::headerDataChanged);

        speak(Lang::de);
        QStringList columns;
        for (int i = 0; i < TreeModel::ColumnCount; ++i)
            columns << window.model().headerData(i, Qt::Horizontal, Qt::DisplayRole).toString();
        const auto text = [&window](const char* name) {
            QWidget* widget = window.findChild<QWidget*>(QLatin1String(name));
            if (auto* label = qobject_cast<QLabel*>(widget))
                return label->text();
            return qobject_cast<QAbstractButton*>(widget)->text();
        };
        auto* up = window.findChild<QPushButton*>("upButton");
        const QList<std::pair<QString, QString>> shown{
            {window.pathField().placeholderText(),
             "Ordnerpfad einfügen oder Ordner ins Fenster ziehen"},
            {up->toolTip(), "Übergeordneter Ordner"},
            {up->accessibleName(), "Übergeordneter Ordner"},
            {text("topBrowse"), "Ordner wählen…"},
            {text("emptyBrowse"), "Ordner wählen…"},
            {text("emptyTitle"), "Ordner hierher ziehen"},
            {columns.join('|'), "Name|Größe|Anteil (am Ordner)"},
            {window.statusLine().text().section(QString::fromUtf8("  ·  gemessen um "), 0, 0),
             tmp.path() + "  ·  0 Objekte  ·  Gesamt " +
                 humanSize(window.model().itemAt(window.model().index(0, 0)).size)},
            {text("volumesHeader"), "Speicher"},
            {text("grantButton"), "App-Berechtigungen…"}};
        for (const auto& [shownText, german] : shown)
            QCOMPARE(shownText, german);
        QVERIFY(window.statusLine().text().contains(QString::fromUtf8("  ·  gemessen um ")));
        QCOMPARE(headers.size(), 1);
        // The rows are rebuilt once the volumes have answered.
        const auto rowSays = [&](const QString& said) {
            const QList<QLabel*> rowLabels = window.volumes().rows()->findChildren<QLabel*>();
            return std::any_of(rowLabels.begin(), rowLabels.end(),
                               [&](QLabel* label) { return label->text().contains(said); });
        };
        QTRY_VERIFY(rowSays("Frei ") && !rowSays("Free "));
        QCOMPARE(describe(shell.menu),
                 (QStringList{"Sizeloom:", "Über Sizeloom", "-", "Einstellungen… Ctrl+,", "-",
                              "Sizeloom beenden Ctrl+Q", "Bearbeiten:", "Ausschneiden Ctrl+X",
                              "Kopieren Ctrl+C", "Einsetzen Ctrl+V", "Alles auswählen Ctrl+A",
                              "Ansicht:", "Aktualisieren F5", "Anhalten Esc"}));
    }

    // Without a folder the hint follows the switch; a listed root's line is rebuilt
    // (everyTextFollowsTheSwitch).
    void hintFollowsTheSwitch() {
        WindowFixture f(false);
        speak(Lang::ru);
        QCOMPARE(f.status->text(), QString("Выберите папку  ·  Двойной клик = Показать в файловом "
                                           "менеджере  ·  Правый клик = Меню"));
    }

    // The Edit items and their keys act on the focused path field, and only on it.
    void editItemsActOnThePathField() {
        Shell shell;
        MainWindow& window = shell.window;
        window.show();
        window.openFolder(QFile::encodeName(tmp.path()));
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QLineEdit* field = &window.pathField();
        const QString path = field->text();
        field->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), field);
        const auto edit = [&shell](int item) { shell.item(1, item)->trigger(); };
        edit(3); // select all
        edit(0); // cut
        QCOMPARE(field->text(), QString());
        QCOMPARE(QApplication::clipboard()->text(), path);
        edit(2); // paste
        QCOMPARE(field->text(), path);
        field->setSelection(1, 3);
        edit(1); // copy
        QCOMPARE(QApplication::clipboard()->text(), path.mid(1, 3));
        QTest::keySequence(&window, QKeySequence::SelectAll);
        QTest::keySequence(&window, QKeySequence::Cut);
        QCOMPARE(field->text(), QString());
        QTest::keySequence(&window, QKeySequence::Paste);
        QCOMPARE(field->text(), path);

        field->selectAll();
        window.outline().setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), &window.outline());
        QApplication::clipboard()->setText("other");
        edit(0);
        edit(2);
        QCOMPARE(field->text(), path);
        QCOMPARE(QApplication::clipboard()->text(), QString("other"));
        QTest::keySequence(&window, QKeySequence("Ctrl+,"));
        QTRY_VERIFY(Shell::shown<PreferencesWindow>() &&
                    Shell::shown<PreferencesWindow>()->isVisible());
    }

    // Names, paths and labels reach labels everywhere; none may take them for markup.
    // Only the capacity texts are our own rich text.
    void everyLabelIsPlainText() {
        Shell shell;
        shell.window.openFolder(QFile::encodeName(tmp.path()));
        shell.showAbout();
        shell.showPrefs();
        QTRY_VERIFY(shell.window.statusLine().text().contains("Total"));
        QTRY_VERIFY(!shell.window.volumes().rows()->findChildren<QLabel*>().isEmpty());
        qsizetype rich = 0;
        for (QWidget* top : {static_cast<QWidget*>(&shell.window),
                             static_cast<QWidget*>(Shell::shown<AboutWindow>()),
                             static_cast<QWidget*>(Shell::shown<PreferencesWindow>())})
            for (const QLabel* label : top->findChildren<QLabel*>()) {
                if (label->textFormat() == Qt::RichText && label->text().contains(" GB"))
                    ++rich;
                else
                    QCOMPARE(label->textFormat(), Qt::PlainText);
            }
        QCOMPARE(rich, shell.window.volumes()
                           .rows()
                           ->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)
                           .size());
    }

    // About and Preferences are made once: shown again, each is the same window, centred
    // again; Preferences shows the language chosen while it was hidden.
    void auxWindowsMadeOnceAndKept() {
        Loc::current = Lang::ru;
        Shell shell;
        shell.showAbout();
        shell.showPrefs();
        const QPointer<QWidget> about = Shell::shown<AboutWindow>();
        const QPointer<PreferencesWindow> prefs = Shell::shown<PreferencesWindow>();
        QVERIFY(about && about->isVisible());
        const QList<QLabel*> labels = about->findChildren<QLabel*>();
        QCOMPARE(labels.size(), 4);
        QCOMPARE(labels[0]->pixmap().devicePixelRatio(), about->devicePixelRatioF());
        QCOMPARE(labels[2]->text(), QString("Version " SIZELOOM_VERSION)); // not translated
        QCOMPARE(checkedTitles(prefs->languageButtons()), QStringList{"Русский"});
        for (QWidget* window : {about.data(), static_cast<QWidget*>(prefs.data())}) {
            QVERIFY(window->close());
            QCoreApplication::processEvents();
            window->move(3, 5);
        }
        prefs->languageButtons()[6]->click(); // Deutsch, while hidden
        shell.showAbout();
        shell.showPrefs();
        QCOMPARE(Shell::shown<AboutWindow>(), about.data());
        QCOMPARE(Shell::shown<PreferencesWindow>(), prefs.data());
        QTRY_COMPARE(prefs->windowTitle(), QString("Einstellungen"));
        QCOMPARE(checkedTitles(prefs->languageButtons()), QStringList{"Deutsch"});
        for (QWidget* window : {about.data(), static_cast<QWidget*>(prefs.data())}) {
            QVERIFY(window->isVisible());
            QCOMPARE(window->frameGeometry().center(), centreOfScreen());
        }
    }

    // However a radio button gets checked, the language switches and is stored.
    void everyWayOfCheckingARadio_data() {
        QTest::addColumn<QString>("way");
        QTest::newRow("mouse click") << "mouse";
        QTest::newRow("space key") << "space";
        QTest::newRow("screen reader's toggle action") << "accessible";
        QTest::newRow("checked by a program") << "program";
    }
    void everyWayOfCheckingARadio() {
        QFETCH(QString, way);
        PreferencesWindow prefs;
        prefs.show();
        QVERIFY(QTest::qWaitForWindowActive(&prefs));
        QRadioButton* deutsch = prefs.languageButtons()[6];
        if (way == "mouse") {
            QTest::mouseClick(deutsch, Qt::LeftButton);
        } else if (way == "space") {
            deutsch->setFocus();
            QTest::keyClick(deutsch, Qt::Key_Space);
        } else if (way == "accessible") {
            QAccessibleInterface* radio = QAccessible::queryAccessibleInterface(deutsch);
            QVERIFY(radio->actionInterface());
            radio->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        } else {
            deutsch->setChecked(true);
        }
        QCOMPARE(Loc::current, Lang::de);
        // Stored for the next start, where startupLanguage reads it (see tst_text).
        QCOMPARE(userDefaults()->value("lang").toString(), QString("de"));
        // The open window follows; the names stay in their own language.
        QTRY_COMPARE(prefs.windowTitle(), QString("Einstellungen"));
        QCOMPARE(prefs.findChild<QLabel*>()->text(), QString("Sprache"));
        QCOMPARE(checkedTitles(prefs.languageButtons()), QStringList{"Deutsch"});
        QCOMPARE(prefs.languageButtons()[0]->text(), QString("한국어"));
    }

    // The folder named at launch and the first item the desktop hands over are opened.
    void launchAndHandOver() {
        const QByteArray folder = QFile::encodeName(tmp.path());
        Shell shell;
        shell.c.launch({"sizeloom", folder});
        QTRY_COMPARE(shell.window.pathField().text(), tmp.path());
        QVERIFY(shell.window.isVisible());
        shell.c.open({QUrl::fromLocalFile("/"), QUrl::fromLocalFile(tmp.path())});
        QCOMPARE(shell.window.pathField().text(), QString("/"));
    }

    // Last: Ctrl+Q ends the event loop the way quitting the program does.
    void quitEndsTheEventLoop() {
        Shell shell;
        shell.c.launch({"sizeloom"});
        QVERIFY(QTest::qWaitForWindowActive(&shell.window));
        QSignalSpy aboutToQuit(qApp, &QCoreApplication::aboutToQuit);
        QTimer::singleShot(0, &shell.window,
                           [&shell] { QTest::keySequence(&shell.window, QKeySequence("Ctrl+Q")); });
        // Only reached if the key did nothing.
        QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(aboutToQuit.size(), 1);
    }
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
