#include "text/Lang.h"
#include "text/SizeText.h"

#include <QTest>

class TestSizeText : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { Loc::current = Lang::en; }

    void humanSize_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("unknown") << qint64(-1) << "Calculating…";
        QTest::newRow("zero") << qint64(0) << "0 B";
        QTest::newRow("below KB") << qint64(1023) << "1023 B";
        QTest::newRow("one KB") << qint64(1024) << "1.0 KB";
        QTest::newRow("rounds up in KB") << qint64(1048575) << "1024.0 KB";
        QTest::newRow("one MB") << qint64(1048576) << "1.0 MB";
        QTest::newRow("GB") << qint64(5) * 1024 * 1024 * 1024 + 512 * 1024 * 1024 << "5.5 GB";
        QTest::newRow("no unit past PB")
            << qint64(1024) * 1024 * 1024 * 1024 * 1024 * 1024 << "1024.0 PB";
        QTest::newRow("int64 max") << std::numeric_limits<qint64>::max() << "8192.0 PB";
    }
    void humanSize() {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(::humanSize(bytes), text);
    }

    void barString_data() {
        QTest::addColumn<double>("fraction");
        QTest::addColumn<int>("filled");
        QTest::addColumn<QString>("percent");
        QTest::newRow("nothing") << 0.0 << 0 << "   0%";
        QTest::newRow("cells and percent round apart") << 0.049 << 0 << "   5%";
        QTest::newRow("half a cell rounds up") << 0.05 << 1 << "   5%";
        QTest::newRow("half") << 0.5 << 5 << "  50%";
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

    void gbStr_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("rounds to 32.0") << qint64(31999999999) << "32.0";
        QTest::newRow("99.9") << qint64(99940000000) << "99.9";
        QTest::newRow("test before rounding") << qint64(99960000000) << "100.0";
        QTest::newRow("100") << qint64(100000000000) << "100";
        QTest::newRow("500") << qint64(499963174912) << "500";
    }
    void gbStr() {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(::gbStr(bytes), text);
    }
};

QTEST_GUILESS_MAIN(TestSizeText)
#include "tst_sizetext.moc"
