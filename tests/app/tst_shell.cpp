// The application shell: the menu bar, Preferences, About and the language switch.
#include "platform/UserDefaults.h"
#include "text/SizeText.h"
#include "window/WindowFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMenuBar>
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

QAction* editItem(AppController& c, int item) {
    return c.mainMenu->actions().at(1)->menu()->actions().at(item);
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
    // new language, the menu rebuilt whole in its place.
    void everyTextFollowsTheSwitch() {
        WindowFixture f(false);
        AppController& c = f.c;
        c.buildMainMenu();
        const QPointer<QMenuBar> oldMenu = c.mainMenu;
        c.openPath(QFile::encodeName(tmp.path()));
        QVERIFY(f.settled());
        QSignalSpy headers(c.model, &QAbstractItemModel::headerDataChanged);

        c.langRadioChanged(Lang::de);
        QStringList columns;
        for (int i = 0; i < TreeModel::ColumnCount; ++i)
            columns << c.model->headerData(i, Qt::Horizontal, Qt::DisplayRole).toString();
        const QList<std::pair<QString, QString>> shown{
            {c.pathField->placeholderText(), "Ordnerpfad einfügen oder Ordner ins Fenster ziehen"},
            {c.upButton->toolTip(), "Übergeordneter Ordner"},
            {c.upButton->accessibleName(), "Übergeordneter Ordner"},
            {c.topBrowse->text(), "Ordner wählen…"},
            {c.emptyBrowse->text(), "Ordner wählen…"},
            {c.emptyTitle->text(), "Ordner hierher ziehen"},
            {columns.join('|'), "Name|Größe|Anteil (am Ordner)"},
            {c.status->text(),
             tmp.path() + "  ·  0 Objekte  ·  Gesamt " + humanSize(c.rootNode->size())},
            {c.volHeaderLabel->text(), "Speicher"},
            {c.grantButton->text(), "Vollständiger Festplattenzugriff…"}};
        for (const auto& [text, german] : shown)
            QCOMPARE(text, german);
        QCOMPARE(headers.size(), 1);
        // The rows are rebuilt once the volumes have answered.
        const auto rowSays = [&](const QString& text) {
            const QList<QLabel*> rowLabels = c.volumesList->findChildren<QLabel*>();
            return std::any_of(rowLabels.begin(), rowLabels.end(),
                               [&](QLabel* label) { return label->text().contains(text); });
        };
        QTRY_VERIFY(rowSays("Frei ") && !rowSays("Free "));
        QCOMPARE(c.window->menuBar(), c.mainMenu);
        QTRY_VERIFY(oldMenu.isNull());
        QCOMPARE(describe(c.mainMenu),
                 (QStringList{"Sizeloom:", "Über Sizeloom", "-", "Einstellungen… Ctrl+,", "-",
                              "Sizeloom beenden Ctrl+Q", "Bearbeiten:", "Ausschneiden Ctrl+X",
                              "Kopieren Ctrl+C", "Einsetzen Ctrl+V", "Alles auswählen Ctrl+A"}));
    }

    // Without a folder the hint follows; a root still being listed has no count to
    // rebuild, and its line stays until it is next written. A listed root's line is
    // rebuilt (everyTextFollowsTheSwitch).
    void statusLineFollows_data() {
        QTest::addColumn<bool>("open");
        QTest::addColumn<QString>("line");
        QTest::newRow("no folder") << false
                                   << "Выберите папку  ·  Двойной клик = Показать в файловом "
                                      "менеджере  ·  Правый клик = Меню";
        QTest::newRow("not listed yet") << true << "untouched";
    }
    void statusLineFollows() {
        QFETCH(bool, open);
        QFETCH(QString, line);
        AppController c;
        const std::unique_ptr<QLabel> status(c.status = new QLabel("untouched"));
        if (open)
            c.rootNode = Node::make("/srv/data", true);
        c.langRadioChanged(Lang::ru);
        QCOMPARE(c.status->text(), line);
    }

    // The Edit items and their keys act on the focused path field, and only on it.
    void editItemsActOnThePathField() {
        WindowFixture f(false);
        AppController& c = f.c;
        c.buildMainMenu();
        c.openPath(QFile::encodeName(tmp.path()));
        QVERIFY(QTest::qWaitForWindowActive(c.window));
        const QString path = c.pathField->text();
        c.pathField->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), c.pathField);
        editItem(c, 3)->trigger(); // select all
        editItem(c, 0)->trigger(); // cut
        QCOMPARE(c.pathField->text(), QString());
        QCOMPARE(QApplication::clipboard()->text(), path);
        editItem(c, 2)->trigger(); // paste
        QCOMPARE(c.pathField->text(), path);
        c.pathField->setSelection(1, 3);
        editItem(c, 1)->trigger(); // copy
        QCOMPARE(QApplication::clipboard()->text(), path.mid(1, 3));
        QTest::keySequence(c.window, QKeySequence::SelectAll);
        QTest::keySequence(c.window, QKeySequence::Cut);
        QCOMPARE(c.pathField->text(), QString());
        QTest::keySequence(c.window, QKeySequence::Paste);
        QCOMPARE(c.pathField->text(), path);

        c.pathField->selectAll();
        c.outline->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), c.outline);
        QApplication::clipboard()->setText("other");
        editItem(c, 0)->trigger();
        editItem(c, 2)->trigger();
        QCOMPARE(c.pathField->text(), path);
        QCOMPARE(QApplication::clipboard()->text(), QString("other"));
        QTest::keySequence(c.window, QKeySequence("Ctrl+,"));
        QTRY_VERIFY(c.prefsWindow && c.prefsWindow->isVisible());
    }

    // Names, paths and labels reach labels everywhere; none may take them for markup.
    // Only the capacity texts are our own rich text.
    void everyLabelIsPlainText() {
        WindowFixture f(false);
        AppController& c = f.c;
        c.openPath(QFile::encodeName(tmp.path()));
        c.showAbout();
        c.showPrefs();
        QVERIFY(f.settled());
        QTRY_VERIFY(!c.volumesList->findChildren<QLabel*>().isEmpty());
        qsizetype rich = 0;
        for (QWidget* top : {static_cast<QWidget*>(c.window), c.aboutWindow, c.prefsWindow})
            for (const QLabel* label : top->findChildren<QLabel*>()) {
                if (label->textFormat() == Qt::RichText && label->text().contains(" GB"))
                    ++rich;
                else
                    QCOMPARE(label->textFormat(), Qt::PlainText);
            }
        QCOMPARE(rich, c.volumesList->findChildren<QWidget*>(Qt::FindDirectChildrenOnly).size());
    }

    // About and Preferences are made once: shown again, each is the same window, centred
    // again; Preferences shows the language chosen while it was hidden.
    void auxWindowsMadeOnceAndKept() {
        Loc::current = Lang::ru;
        AppController c;
        c.buildMainMenu();
        c.mainMenu->actions().at(0)->menu()->actions().at(0)->trigger();
        c.showPrefs();
        const QPointer<QWidget> about = c.aboutWindow, prefs = c.prefsWindow;
        QVERIFY(about && about->isVisible());
        const QList<QLabel*> labels = about->findChildren<QLabel*>();
        QCOMPARE(labels.size(), 4);
        QCOMPARE(labels[0]->pixmap().devicePixelRatio(), about->devicePixelRatioF());
        QCOMPARE(labels[2]->text(), QString("Version " SIZELOOM_VERSION)); // not translated
        QCOMPARE(checkedTitles(c.langRadios), QStringList{"Русский"});
        for (QWidget* window : {about.data(), prefs.data()}) {
            QVERIFY(window->close());
            QCoreApplication::processEvents();
            window->move(3, 5);
        }
        c.langRadios[6]->click(); // Deutsch, while hidden
        c.showAbout();
        c.showPrefs();
        QCOMPARE(c.aboutWindow, about.data());
        QCOMPARE(c.prefsWindow, prefs.data());
        QCOMPARE(prefs->windowTitle(), QString("Einstellungen"));
        QCOMPARE(checkedTitles(c.langRadios), QStringList{"Deutsch"});
        for (QWidget* window : {about.data(), prefs.data()}) {
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
        AppController c;
        c.showPrefs();
        QVERIFY(QTest::qWaitForWindowActive(c.prefsWindow));
        QRadioButton* deutsch = c.langRadios[6];
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
        // Stored for the next start, where defaultLang reads it (see tst_text).
        QCOMPARE(userDefaults()->value("lang").toString(), QString("de"));
        // The open window follows at once; the names stay in their own language.
        QCOMPARE(c.prefsWindow->windowTitle(), QString("Einstellungen"));
        QCOMPARE(c.prefsLangLabel->text(), QString("Sprache"));
        QCOMPARE(checkedTitles(c.langRadios), QStringList{"Deutsch"});
        QCOMPARE(c.langRadios[0]->text(), QString("한국어"));
    }

    // Last: Ctrl+Q ends the event loop the way quitting the program does. Built in the
    // order start-up uses, the window adopts the menu made before it.
    void quitEndsTheEventLoop() {
        AppController c;
        c.buildMainMenu();
        c.buildWindow();
        const std::unique_ptr<QMainWindow> window(c.window);
        QCOMPARE(c.window->menuBar(), c.mainMenu);
        QVERIFY(QTest::qWaitForWindowActive(c.window));
        QSignalSpy aboutToQuit(qApp, &QCoreApplication::aboutToQuit);
        QTimer::singleShot(0, c.window,
                           [&c] { QTest::keySequence(c.window, QKeySequence("Ctrl+Q")); });
        // Only reached if the key did nothing.
        QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(aboutToQuit.size(), 1);
    }
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
