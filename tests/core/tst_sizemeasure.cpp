// SPDX-License-Identifier: GPL-2.0-or-later
// The du engine's own pieces: du run on a path that reads like an option, and its
// output read. Its numbers against real trees are in the walk engine test.
#include "TempTree.h"
#include "core/DuOutput.h"
#include "core/SizeMeasure.h"

#include <QDir>

using namespace temptree;

class TestSizeMeasure : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray root;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        root = tmp.bytes();
    }

    // A path that reads like an option is measured as the path: "-x" alone would make du
    // measure the working folder instead.
    void pathThatLooksLikeAnOption() {
        const QByteArray cwd = join(root, "cwd");
        makeDir(cwd);
        makeDir(join(cwd, "-x"));
        writeFile(join(cwd, "-x/small"), 4096);
        writeFile(join(cwd, "large"), 400000);
        const QString was = QDir::currentPath();
        QVERIFY(QDir::setCurrent(QFile::decodeName(cwd)));
        const qint64 measured = folderDiskUsage("-x");
        QDir::setCurrent(was);
        QCOMPARE(measured, duBytes(join(cwd, "-x")));
    }

    void parse_data() {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<qint64>("bytes");
        QTest::newRow("normal line") << QByteArray("12\t/some/path\n") << qint64(12288);
        QTest::newRow("leading spaces") << QByteArray("   12\t/p\n") << qint64(12288);
        QTest::newRow("leading tab is an empty piece") << QByteArray("\t12\t/p\n") << qint64(12288);
        QTest::newRow("no tab keeps the line break") << QByteArray("12\n") << qint64(0);
        QTest::newRow("explicit plus") << QByteArray("+12\t/p") << qint64(12288);
        QTest::newRow("explicit minus") << QByteArray("-3\t/p") << qint64(-3072);
        QTest::newRow("nothing printed") << QByteArray() << qint64(0);
        QTest::newRow("only blanks") << QByteArray("   \t/p") << qint64(0);
        QTest::newRow("sign alone") << QByteArray("+\t/p") << qint64(0);
        QTest::newRow("trailing letter") << QByteArray("12k\t/p") << qint64(0);
        QTest::newRow("not UTF-8") << QByteArray("12\t/p\xff\n") << qint64(0);
        QTest::newRow("int64 overflow") << QByteArray("9223372036854775808\t/p") << qint64(0);
        QTest::newRow("too big to scale") << QByteArray("9007199254740993\t/p") << qint64(0);
        QTest::newRow("largest scalable")
            << QByteArray("9007199254740991\t/p") << qint64(9007199254740991) * 1024;
    }
    void parse() {
        QFETCH(QByteArray, output);
        QFETCH(qint64, bytes);
        QCOMPARE(parseDuOutput(output), bytes);
    }

    // du echoes its operand; a folder name that is not UTF-8 must not void the number.
    void echoedOperandIsNotPartOfTheNumber() {
        const QByteArray path("/tmp/bad\xff\xfe");
        QCOMPARE(duSizeFromOutput("40\t" + path + "\n", path), qint64(40960));
        QCOMPARE(duSizeFromOutput("40\t/other\xff\n", path), qint64(0));
        QCOMPARE(duSizeFromOutput("40\t/tmp/ok\n", "/tmp/ok"), qint64(40960));
    }
};

QTEST_GUILESS_MAIN(TestSizeMeasure)
#include "tst_sizemeasure.moc"
