// SPDX-License-Identifier: GPL-2.0-or-later
// The interface's texts: the language chosen, the string table, and the texts made
// from sizes (size and share cells, bars, capacities and the status line).
#include "platform/UserDefaults.h"
#include "text/Lang.h"
#include "text/SizeText.h"
#include "views/ShareText.h"
#include "window/LanguageSwitch.h"
#include "window/StatusLine.h"

#include <QStandardPaths>
#include <QTest>

using Env = QMap<QString, QString>;

class TestText : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() {
        Loc::current = Lang::en;
        userDefaults()->clear();
    }

    // The language at start: the stored choice when valid, else the first language the
    // environment prefers, else English. Choosing never writes: a derived language is
    // not remembered.
    void defaultLang_data() {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<Env>("env");
        QTest::addColumn<Lang>("lang");
        const QVariant none;
        QTest::newRow("stored wins over LANG")
            << QVariant("fr") << Env{{"LANG", "de_DE.UTF-8"}} << Lang::fr;
        QTest::newRow("stored invalid")
            << QVariant("fr-FR") << Env{{"LANG", "ja_JP.UTF-8"}} << Lang::ja;
        QTest::newRow("zh_TW") << none << Env{{"LANG", "zh_TW.UTF-8"}} << Lang::zh;
        QTest::newRow("it") << none << Env{{"LANGUAGE", "it_IT:de"}, {"LANG", "de_DE"}} << Lang::en;
        QTest::newRow("empty environment") << none << Env{} << Lang::en;
        QTest::newRow("LANGUAGE first, empty parts skipped")
            << none << Env{{"LANGUAGE", "::ko_KR:ja"}, {"LANG", "ru_RU.UTF-8"}} << Lang::ko;
        QTest::newRow("LC_ALL before LC_MESSAGES and LANG")
            << none << Env{{"LC_ALL", "es_MX"}, {"LC_MESSAGES", "de"}, {"LANG", "ja"}} << Lang::es;
        QTest::newRow("LC_MESSAGES before LANG")
            << none << Env{{"LC_MESSAGES", "de_DE@euro"}, {"LANG", "ja_JP"}} << Lang::de;
        QTest::newRow("C is no language, yet decides")
            << none << Env{{"LC_ALL", "C.UTF-8"}, {"LANG", "de_DE"}} << Lang::en;
    }
    void defaultLang() {
        QFETCH(QVariant, stored);
        QFETCH(Env, env);
        QFETCH(Lang, lang);
        if (stored.isValid())
            userDefaults()->setValue("lang", stored);
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
            qputenv(name, env.value(name).toUtf8());
        QCOMPARE(startupLanguage(), lang);
        QCOMPARE(userDefaults()->value("lang"), stored);
    }

    // The table is complete, and the texts callers build on keep their exact shape. The
    // hint and the menu speak of the desktop's file manager, in every language.
    void tableIsComplete() {
        for (auto entry = STRINGS().cbegin(); entry != STRINGS().cend(); ++entry) {
            QCOMPARE(entry->size(), 9);
            for (const QString& text : *entry)
                QVERIFY2(!text.isEmpty() && !text.contains("Finder") && !text.contains("访达"),
                         qPrintable(entry.key() + ": " + text));
        }
    }

    void textShapes_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("lang");
        QTest::addColumn<QString>("text");
        QTest::newRow("ellipsis") << "choose_folder" << int(Lang::en) << "Choose Folder…";
        QTest::newRow("trailing blank") << "not_a_folder" << int(Lang::en) << "Not a folder: ";
        QTest::newRow("two places around a full-width colon")
            << "compress_failed" << int(Lang::zh) << "无法压缩 %@：%@";
        QTest::newRow("item changed")
            << "item_changed" << int(Lang::en) << "%@ changed on disk; nothing was done";
        QTest::newRow("full-width parentheses")
            << "col_pct" << int(Lang::ja) << "割合（親フォルダ比）";
        QTest::newRow("hint in Chinese")
            << "status_initial" << int(Lang::zh)
            << "选择文件夹  ·  双击 = 在文件管理器中显示  ·  右键 = 菜单";
        QTest::newRow("no services")
            << "share_none" << int(Lang::ru) << "Нет доступных служб для отправки";
        QTest::newRow("properties title")
            << "info_size_on_disk" << int(Lang::fr) << "Taille sur le disque";
        QTest::newRow("program name kept") << "menu_quit" << int(Lang::ru) << "Завершить Sizeloom";
        QTest::newRow("unknown key is itself") << "no_such_key" << int(Lang::zh) << "no_such_key";
    }
    void textShapes() {
        QFETCH(QString, key);
        QFETCH(int, lang);
        QFETCH(QString, text);
        Loc::current = Lang(lang);
        QCOMPARE(t(key), text);
    }

    // Places are filled in order; what fills one is never read as a place itself.
    void placesFilled_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("filled");
        QTest::newRow("two in order")
            << "Could not compress %@: %@" << QStringList{"a", "b"} << "Could not compress a: b";
        QTest::newRow("a name holding a place")
            << "%@ and %@" << QStringList{"%@ %d", "x"} << "%@ %d and x";
        QTest::newRow("count, size and a percentage")
            << "%d items  ·  %@  ·  %d%% used" << QStringList{"3", "1 KB", "40"}
            << "3 items  ·  1 KB  ·  40% used";
        QTest::newRow("fewer arguments than places") << "%@ %@" << QStringList{"a"} << "a %@";
    }
    void placesFilled() {
        QFETCH(QString, text);
        QFETCH(QStringList, arguments);
        QFETCH(QString, filled);
        QCOMPARE(fillPlaces(text, arguments), filled);
    }

    // Sizes as the outline shows them, and as the volumes panel shows gigabytes (of 10^9
    // bytes, without the unit).
    void sizeTexts_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<bool>("gigabytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << qint64(0) << false << "0 B";
        QTest::newRow("below KB") << qint64(1023) << false << "1023 B";
        QTest::newRow("one KB") << qint64(1024) << false << "1.0 KB";
        QTest::newRow("rounds up in KB") << qint64(1048575) << false << "1024.0 KB";
        QTest::newRow("one MB") << qint64(1048576) << false << "1.0 MB";
        QTest::newRow("GB") << qint64(5) * 1024 * 1024 * 1024 + 512 * 1024 * 1024 << false
                            << "5.5 GB";
        QTest::newRow("no unit past PB")
            << qint64(1024) * 1024 * 1024 * 1024 * 1024 * 1024 << false << "1024.0 PB";
        QTest::newRow("gigabytes: rounds to 32.0") << qint64(31999999999) << true << "32.0";
        QTest::newRow("gigabytes: 99.9") << qint64(99940000000) << true << "99.9";
        QTest::newRow("gigabytes: test before rounding") << qint64(99960000000) << true << "100.0";
    }
    void sizeTexts() {
        QFETCH(qint64, bytes);
        QFETCH(bool, gigabytes);
        QFETCH(QString, text);
        QCOMPARE(gigabytes ? gbStr(bytes) : humanSize(bytes), text);
    }

    void barString_data() {
        QTest::addColumn<double>("fraction");
        QTest::addColumn<int>("filled");
        QTest::addColumn<QString>("percent");
        QTest::newRow("nothing") << 0.0 << 0 << "   0%";
        QTest::newRow("cells and percent round apart") << 0.049 << 0 << "   5%";
        QTest::newRow("half a cell rounds up") << 0.05 << 1 << "   5%";
        QTest::newRow("9.5 cells") << 0.95 << 10 << "  95%";
        QTest::newRow("whole") << 1.0 << 10 << " 100%";
        QTest::newRow("more than whole") << 1.7 << 10 << " 170%";
        QTest::newRow("negative clamps") << -0.3 << 0 << " -30%";
    }
    void barString() {
        QFETCH(double, fraction);
        QFETCH(int, filled);
        QFETCH(QString, percent);
        const QString expected =
            QString(filled, QChar(0x2588)) + QString(10 - filled, QChar(0x2591)) + percent;
        QCOMPARE(::barString(fraction), expected);
    }

    // The line under the outline for an open folder, and the count as a change of language
    // writes it, before the total is known too.
    void statusLine_data() {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("line");
        const QString path = QStringLiteral("/data/caf\uFFFD  ·  ");
        QTest::newRow("en measuring")
            << "en"
            << "progress" << path + "Measuring…  1200 items  ·  5.0 MB so far";
        QTest::newRow("fr measuring a volume")
            << "fr"
            << "volume"
            << path + "Mesure…  1200 éléments  ·  5.0 MB pour l’instant  ·  40 % de l’espace "
                      "utilisé du volume";
        QTest::newRow("de stopped")
            << "de"
            << "stopped" << path + "Angehalten  ·  1200 Objekte  ·  bisher 5.0 MB";
        QTest::newRow("en unknown total") << "en"
                                          << "unknown" << path + "3 items  ·  Total Calculating…";
        QTest::newRow("ko measured")
            << "ko"
            << "measured" << path + "하위 3개  ·  합계 5.0 MB  ·  오후 2:05에 측정";
    }
    void statusLine() {
        QFETCH(QString, lang);
        QFETCH(QString, kind);
        QFETCH(QString, line);
        Loc::current = *LangInfo::fromRawValue(lang);
        const QByteArray path = "/data/caf\xe9";
        const qint64 size = qint64(5) * 1024 * 1024;
        QString shown;
        if (kind == "progress" || kind == "volume")
            shown = progressStatusLine(path, 1200, size,
                                       kind == "volume" ? std::optional<int>(40) : std::nullopt);
        else if (kind == "stopped")
            shown = stoppedStatusLine(path, 1200, size);
        else
            shown = countedStatusLine(
                path, 3, kind == "unknown" ? -1 : size,
                kind == "unknown" ? QDateTime() : QDateTime(QDate(2026, 11, 24), QTime(14, 5)));
        QCOMPARE(shown, line);
    }

    // A size's share of its folder's total, as a bar and a percentage.
    void share_data() {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<double>("fraction"); // negative: empty text
        QTest::newRow("of the folder's total") << qint64(250) << qint64(1000) << 0.25;
        QTest::newRow("unknown size") << qint64(-1) << qint64(1000) << -1.0;
        QTest::newRow("zero total") << qint64(50) << qint64(0) << -1.0;
        QTest::newRow("not clamped above one") << qint64(170) << qint64(100) << 1.7;
    }
    void share() {
        QFETCH(qint64, size);
        QFETCH(qint64, total);
        QFETCH(double, fraction);
        QCOMPARE(shareText(size, total), fraction < 0 ? QString() : ::barString(fraction));
    }
};

QTEST_GUILESS_MAIN(TestText)
#include "tst_text.moc"
