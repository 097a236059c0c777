#include "app/AppController.h"
#include "app/UserDefaults.h"
#include "app/VolumeRowsProbe.h"

#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QRadioButton>
#include <QScreen>
#include <QStandardPaths>
#include <QTest>

namespace {

QStringList checkedTitles(const QList<QRadioButton*>& radios) {
    QStringList out;
    for (QRadioButton* radio : radios)
        if (radio->isChecked())
            out << radio->text();
    return out;
}

QVariant storedLang() {
    return userDefaults()->value(QStringLiteral("lang"));
}

QPoint centreOfScreen() {
    return QGuiApplication::primaryScreen()->availableGeometry().center();
}

// Sets an environment variable for one scope, restoring what was there.
class EnvOverride {
public:
    EnvOverride(const char* name, const QByteArray& value)
        : name(name), had(qEnvironmentVariableIsSet(name)), old(qgetenv(name)) {
        qputenv(name, value);
    }
    ~EnvOverride() {
        if (had)
            qputenv(name, old);
        else
            qunsetenv(name);
    }

private:
    const char* name;
    bool had;
    QByteArray old;
};

} // namespace

class TestPrefs : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() {
        Loc::current = Lang::en;
        userDefaults()->clear();
    }

    void radiosInAThreeByThreeGrid() {
        AppController controller;
        controller.showPrefs();
        QCOMPARE(controller.langRadios.size(), 9);
        const QStringList names{"한국어",   "English", "中文",      "Español", "日本語",
                                "Français", "Deutsch", "Português", "Русский"};
        for (int i = 0; i < 9; ++i) {
            QRadioButton* radio = controller.langRadios[i];
            QCOMPARE(radio->text(), names[i]);
            // Same row: same top; same column: same left.
            QRadioButton* rowStart = controller.langRadios[i / 3 * 3];
            QRadioButton* columnTop = controller.langRadios[i % 3];
            QCOMPARE(radio->y(), rowStart->y());
            QCOMPARE(radio->x(), columnTop->x());
        }
        QCOMPARE(checkedTitles(controller.langRadios), QStringList{"English"});
    }

    void layoutMeasures() {
        AppController controller;
        controller.showPrefs();
        QWidget* window = controller.prefsWindow;
        QLabel* label = controller.prefsLangLabel;
        const QList<QRadioButton*>& radios = controller.langRadios;
        QCOMPARE(label->text(), QStringLiteral("Language"));
        QCOMPARE(label->font().pixelSize(), 13);
        QCOMPARE(label->font().weight(), QFont::DemiBold);
        QCOMPARE(label->pos(), QPoint(28, 24));
        QCOMPARE(radios[0]->x(), 28);
        QCOMPARE(radios[0]->y() - label->geometry().bottom() - 1, 14);
        QCOMPARE(radios[3]->y() - radios[0]->geometry().bottom() - 1, 12);
        int columnRight = 0;
        for (int row = 0; row < 3; ++row)
            columnRight = qMax(columnRight, radios[row * 3]->geometry().right());
        QCOMPARE(radios[1]->x() - columnRight - 1, 22);
        // The window takes the size its contents need and keeps it.
        QCOMPARE(window->size(), window->sizeHint());
        QCOMPARE(window->minimumSize(), window->maximumSize());
        int right = 0, bottom = 0;
        for (QRadioButton* radio : radios) {
            right = qMax(right, radio->geometry().right());
            bottom = qMax(bottom, radio->geometry().bottom());
        }
        QCOMPARE(window->height() - bottom - 1, 24);
        QVERIFY(window->width() - right - 1 >= 28);
    }

    void shownTwiceIsTheSameWindow() {
        Loc::current = Lang::fr;
        AppController controller;
        controller.showPrefs();
        QPointer<QWidget> first = controller.prefsWindow;
        QVERIFY(first->isVisible());
        QCOMPARE(first->windowTitle(), QStringLiteral("Préférences"));
        QVERIFY(first->close());
        QCoreApplication::processEvents();
        QVERIFY(first);
        QVERIFY(!first->isVisible());
        first->move(3, 5);

        controller.langRadios[6]->click(); // Deutsch, while hidden
        controller.showPrefs();
        QCOMPARE(controller.prefsWindow, first.data());
        QVERIFY(first->isVisible());
        QCOMPARE(first->windowTitle(), QStringLiteral("Einstellungen"));
        QCOMPARE(checkedTitles(controller.langRadios), QStringList{"Deutsch"});
        QCOMPARE(first->frameGeometry().center(), centreOfScreen());
    }

    void switchWhilePrefsAreOpen() {
        AppController controller;
        QWidget panel;
        QPointer<QLabel> oldRow = giveVolumesListAnOldRow(controller, &panel);
        controller.showPrefs();
        QTest::mouseClick(controller.langRadios[4], Qt::LeftButton); // 日本語
        QCOMPARE(Loc::current, Lang::ja);
        QCOMPARE(controller.prefsWindow->windowTitle(), QStringLiteral("環境設定"));
        QCOMPARE(controller.prefsLangLabel->text(), QStringLiteral("言語"));
        QCOMPARE(checkedTitles(controller.langRadios), QStringList{"日本語"});
        QCOMPARE(controller.langRadios[0]->text(), QStringLiteral("한국어"));
        QCOMPARE(controller.langRadios[8]->text(), QStringLiteral("Русский"));
        QCOMPARE(storedLang().toString(), QStringLiteral("ja"));
        QVERIFY(oldRow.isNull());
        QCOMPARE(controller.mainMenu->actions().at(1)->menu()->title(), QStringLiteral("編集"));
    }

    // Choosing the language already current stores it again and changes nothing seen.
    void currentLanguageAgain() {
        AppController controller;
        controller.showPrefs();
        QVERIFY(!storedLang().isValid());
        QTest::mouseClick(controller.langRadios[1], Qt::LeftButton);
        QCOMPARE(storedLang().toString(), QStringLiteral("en"));
        QCOMPARE(Loc::current, Lang::en);
        QCOMPARE(checkedTitles(controller.langRadios), QStringList{"English"});
        QCOMPARE(controller.prefsWindow->windowTitle(), QStringLiteral("Preferences"));
    }

    void storedChoiceWinsNextTime_data() {
        QTest::addColumn<int>("radio");
        QTest::addColumn<QByteArray>("systemLang");
        QTest::addColumn<QString>("code");
        QTest::newRow("ko over German") << 0 << QByteArray("de_DE.UTF-8") << "ko";
        QTest::newRow("ru over Japanese") << 8 << QByteArray("ja_JP.UTF-8") << "ru";
        QTest::newRow("en over French") << 1 << QByteArray("fr_FR.UTF-8") << "en";
    }
    void storedChoiceWinsNextTime() {
        QFETCH(int, radio);
        QFETCH(QByteArray, systemLang);
        QFETCH(QString, code);
        const EnvOverride language("LANGUAGE", systemLang.left(2));
        const EnvOverride all("LC_ALL", systemLang);
        const EnvOverride lang("LANG", systemLang);
        {
            AppController controller;
            controller.showPrefs();
            controller.langRadios[radio]->click();
        }
        Loc::current = Lang::en;
        QCOMPARE(LangInfo::rawValue(AppController::defaultLang()), code);
    }

    void aboutMadeOnceAndKept() {
        AppController controller;
        controller.showAbout();
        QPointer<QWidget> about = controller.aboutWindow;
        QVERIFY(about && about->isVisible());
        QCOMPARE(about->windowTitle(), QString());
        QVERIFY(about->close());
        QCoreApplication::processEvents();
        QVERIFY(about);
        controller.showAbout();
        QCOMPARE(controller.aboutWindow, about.data());
        QVERIFY(about->isVisible());
        QCOMPARE(about->frameGeometry().center(), centreOfScreen());
        QCOMPARE(about->size(), about->sizeHint());
    }

    void aboutContents() {
        Loc::current = Lang::ru;
        AppController controller;
        controller.showAbout();
        const QList<QLabel*> labels = controller.aboutWindow->findChildren<QLabel*>();
        QCOMPARE(labels.size(), 4);
        QLabel* icon = labels[0];
        QCOMPARE(icon->size(), QSize(88, 88));
        QCOMPARE(icon->pixmap().deviceIndependentSize(), QSizeF(88, 88));
        QCOMPARE(icon->pixmap().devicePixelRatio(), controller.aboutWindow->devicePixelRatioF());
        QCOMPARE(icon->pos(), QPoint(icon->x(), 28));
        QCOMPARE(labels[1]->text(), QStringLiteral("Sizeloom"));
        QVERIFY(labels[1]->font().bold());
        QCOMPARE(labels[1]->font().pixelSize(), 16);
        QCOMPARE(labels[1]->y() - icon->geometry().bottom() - 1, 12);
        // Not translated.
        QCOMPARE(labels[2]->text(), QStringLiteral("Version " SIZELOOM_VERSION));
        QCOMPARE(labels[2]->font().pixelSize(), 11);
        QCOMPARE(labels[3]->font().pixelSize(), 10);
        QVERIFY(!labels[3]->text().isEmpty());
        QCOMPARE(labels[3]->y() - labels[2]->geometry().bottom() - 1, 2);
        // Everything on one centre line.
        const int centre = controller.aboutWindow->width() / 2;
        for (QLabel* label : labels)
            QVERIFY(qAbs(label->geometry().center().x() - centre) <= 1);
    }
};

QTEST_MAIN(TestPrefs)
#include "tst_prefs.moc"
