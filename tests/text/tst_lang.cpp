#include "app/AppController.h"
#include "app/UserDefaults.h"
#include "platform/PreferredLanguages.h"
#include "text/Lang.h"

#include <QStandardPaths>
#include <QTest>

using Env = QMap<QString, QString>;
Q_DECLARE_METATYPE(std::optional<QString>)

class TestLang : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() {
        Loc::current = Lang::en;
        userDefaults()->clear();
    }

    void chooseLang_data() {
        QTest::addColumn<std::optional<QString>>("stored");
        QTest::addColumn<QStringList>("preferred");
        QTest::addColumn<int>("lang");
        const std::optional<QString> none;
        QTest::newRow("stored wins")
            << std::optional<QString>("fr") << QStringList{"de-DE"} << int(Lang::fr);
        QTest::newRow("stored with region ignored")
            << std::optional<QString>("fr-FR") << QStringList{"ja"} << int(Lang::ja);
        QTest::newRow("zh_TW") << none << QStringList{"zh-TW"} << int(Lang::zh);
        QTest::newRow("brazil") << none << QStringList{"pt-BR"} << int(Lang::pt);
        QTest::newRow("latin american spanish") << none << QStringList{"es-419"} << int(Lang::es);
        QTest::newRow("italian") << none << QStringList{"it-IT", "de"} << int(Lang::en);
        QTest::newRow("upper case tag") << none << QStringList{"DE-AT"} << int(Lang::de);
        QTest::newRow("nothing preferred") << none << QStringList{} << int(Lang::en);
    }
    void chooseLang() {
        QFETCH(std::optional<QString>, stored);
        QFETCH(QStringList, preferred);
        QFETCH(int, lang);
        QCOMPARE(int(::chooseLang(stored, preferred)), lang);
    }

    void preferredFromEnvironment_data() {
        QTest::addColumn<Env>("env");
        QTest::addColumn<QStringList>("tags");
        QTest::newRow("empty environment") << Env{} << QStringList{};
        QTest::newRow("LANG only") << Env{{"LANG", "pt_BR.UTF-8"}} << QStringList{"pt-BR"};
        QTest::newRow("zh_TW") << Env{{"LANG", "zh_TW.UTF-8"}} << QStringList{"zh-TW"};
        QTest::newRow("es_419") << Env{{"LANG", "es_419"}} << QStringList{"es-419"};
        QTest::newRow("LANGUAGE list first")
            << Env{{"LANGUAGE", "fr_CA:ja::de"}, {"LANG", "ru_RU.UTF-8"}}
            << QStringList{"fr-CA", "ja", "de", "ru-RU"};
        QTest::newRow("LC_ALL before LANG")
            << Env{{"LC_ALL", "ko_KR.UTF-8"}, {"LANG", "en_US.UTF-8"}} << QStringList{"ko-KR"};
        QTest::newRow("C is no language") << Env{{"LANG", "C.UTF-8"}} << QStringList{};
        QTest::newRow("first set variable decides")
            << Env{{"LC_ALL", "C"}, {"LANG", "de_DE"}} << QStringList{};
    }
    void preferredFromEnvironment() {
        QFETCH(Env, env);
        QFETCH(QStringList, tags);
        QCOMPARE(preferredLanguages([&](const char* name) { return env.value(name); }), tags);
    }

    void defaultLangReadsStoredChoice_data() {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QByteArray>("lang");
        QTest::addColumn<int>("expected");
        QTest::newRow("stored fr beats system")
            << QVariant("fr") << QByteArray("de_DE.UTF-8") << int(Lang::fr);
        QTest::newRow("invalid stored value")
            << QVariant("fr-FR") << QByteArray("ja_JP.UTF-8") << int(Lang::ja);
        QTest::newRow("nothing stored") << QVariant() << QByteArray("zh_TW.UTF-8") << int(Lang::zh);
    }
    void defaultLangReadsStoredChoice() {
        QFETCH(QVariant, stored);
        QFETCH(QByteArray, lang);
        QFETCH(int, expected);
        if (stored.isValid())
            userDefaults()->setValue("lang", stored);
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES"})
            qunsetenv(name);
        qputenv("LANG", lang);
        QCOMPARE(int(AppController::defaultLang()), expected);
        // Choosing never writes: a derived language is not remembered.
        QCOMPARE(userDefaults()->value("lang"), stored);
    }

    void lookupFallbacks() {
        Loc::current = Lang::ru;
        QCOMPARE(t("menu_quit"), QString("Завершить Sizeloom"));
        QCOMPARE(t("no_such_key"), QString("no_such_key"));
        Loc::current = Lang::zh;
        QCOMPARE(t("not_a_folder"), QString("不是文件夹："));
    }

    // The table is complete, and the texts callers build on keep their exact shape.
    void tableIsComplete() {
        QCOMPARE(STRINGS().size(), 43);
        for (auto entry = STRINGS().cbegin(); entry != STRINGS().cend(); ++entry) {
            QCOMPARE(entry->size(), 9);
            for (const QString& text : *entry)
                QVERIFY2(!text.isEmpty(), qPrintable(entry.key()));
        }
    }

    void textShapes_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("lang");
        QTest::addColumn<QString>("text");
        QTest::newRow("ellipsis") << "choose_folder" << int(Lang::en) << "Choose Folder…";
        QTest::newRow("trailing blank") << "not_a_folder" << int(Lang::en) << "Not a folder: ";
        QTest::newRow("french blank before colon") << "copied" << int(Lang::fr) << "Copié : ";
        QTest::newRow("full-width parentheses")
            << "col_pct" << int(Lang::ja) << "割合（親フォルダ比）";
    }
    void textShapes() {
        QFETCH(QString, key);
        QFETCH(int, lang);
        QFETCH(QString, text);
        QCOMPARE(STRINGS().value(key).value(Lang(lang)), text);
    }
};

QTEST_GUILESS_MAIN(TestLang)
#include "tst_lang.moc"
