// SPDX-License-Identifier: GPL-2.0-or-later
// The naming rules of rename, duplicate and compress, as tables.
#include "actions/ItemNaming.h"

#include <QTest>

class TestItemNaming : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The item, its first and second duplicate, its first and second archive.
    void copyAndArchiveNames_data() {
        QTest::addColumn<QByteArrayList>("names");
        QTest::newRow("file") << QByteArrayList{"report.pdf", "report copy.pdf",
                                                "report copy 2.pdf", "report.zip", "report 2.zip"};
        QTest::newRow("no extension") << QByteArrayList{"Photos", "Photos copy", "Photos copy 2",
                                                        "Photos.zip", "Photos 2.zip"};
        QTest::newRow("two extensions")
            << QByteArrayList{"archive.tar.gz", "archive.tar copy.gz", "archive.tar copy 2.gz",
                              "archive.tar.zip", "archive.tar 2.zip"};
        QTest::newRow("leading dot only") << QByteArrayList{
            ".bashrc", ".bashrc copy", ".bashrc copy 2", ".bashrc.zip", ".bashrc 2.zip"};
        QTest::newRow("leading dot and extension")
            << QByteArrayList{".config.json", ".config copy.json", ".config copy 2.json",
                              ".config.zip", ".config 2.zip"};
        QTest::newRow("trailing dot") << QByteArrayList{"notes.", "notes. copy", "notes. copy 2",
                                                        "notes..zip", "notes. 2.zip"};
        QTest::newRow("dots only")
            << QByteArrayList{"...", "... copy", "... copy 2", "....zip", "... 2.zip"};
        QTest::newRow("bytes not UTF-8")
            << QByteArrayList{"caf\xe9.txt", "caf\xe9 copy.txt", "caf\xe9 copy 2.txt",
                              "caf\xe9.zip", "caf\xe9 2.zip"};
        // Near the limit of 255 bytes the base gives way, never the ending, and never
        // in the middle of a character.
        const QByteArray long250 = QByteArray(246, 'a') + ".pdf";
        QTest::newRow("250 bytes") << QByteArrayList{
            long250, QByteArray(246, 'a') + " copy.pdf", QByteArray(244, 'a') + " copy 2.pdf",
            QByteArray(246, 'a') + ".zip", QByteArray(246, 'a') + " 2.zip"};
        const auto wide = [](int characters) {
            return "bb" + QByteArray("\xc3\xa9").repeated(characters);
        };
        QTest::newRow("two-byte characters at the limit")
            << QByteArrayList{wide(125) + ".md", wide(122) + " copy.md", wide(121) + " copy 2.md",
                              wide(124) + ".zip", wide(123) + " 2.zip"};
    }
    void copyAndArchiveNames() {
        QFETCH(QByteArrayList, names);
        const QByteArray item = names.takeFirst();
        QCOMPARE((QByteArrayList{duplicateName(item, 1), duplicateName(item, 2),
                                 archiveName(item, 1), archiveName(item, 2)}),
                 names);
    }

    // The first free name wins, also in a gap; the counter 1 is never written.
    void firstFreeFillsAGap() {
        const QByteArrayList taken{"report.zip", "report 3.zip"};
        QCOMPARE(firstFreeName([](int n) { return archiveName("report.pdf", n); },
                               [&](const QByteArray& name) { return taken.contains(name); }),
                 QByteArray("report 2.zip"));
    }

    // Horizontal white space of every kind is trimmed from the ends, line breaks stay.
    void renameRequests_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("newName");
        const int nothing = RenameRequest::Nothing, invalid = RenameRequest::Invalid,
                  rename = RenameRequest::Rename;
        QTest::newRow("unchanged")
            << QString("a.txt") << QByteArray("a.txt") << nothing << QByteArray();
        QTest::newRow("spaces around")
            << QString("  a.txt\t") << QByteArray("a.txt") << nothing << QByteArray();
        QTest::newRow("empty") << QString() << QByteArray("a.txt") << nothing << QByteArray();
        QTest::newRow("only spaces")
            << QString(" \t ") << QByteArray("a.txt") << nothing << QByteArray();
        QTest::newRow("decomposed is the same")
            << QString("cafe\u0301") << QByteArray("caf\xc3\xa9") << nothing << QByteArray();
        QTest::newRow("case is a change")
            << QString("photo.jpg") << QByteArray("photo.JPG") << rename << QByteArray("photo.jpg");
        QTest::newRow("no-break and ideographic spaces")
            << QString("\u00a0b.txt\u3000") << QByteArray("a.txt") << rename << QByteArray("b.txt");
        QTest::newRow("em and thin spaces")
            << QString("\u2003b.txt\u2009") << QByteArray("a.txt") << rename << QByteArray("b.txt");
        QTest::newRow("UTF-8 bytes") << QString("Ünïcode") << QByteArray("a") << rename
                                     << QByteArray("\xc3\x9cn\xc3\xaf"
                                                   "code");
        QTest::newRow("slash") << QString("sub/b") << QByteArray("a") << invalid << QByteArray();
        QTest::newRow("dot") << QString(".") << QByteArray("a") << invalid << QByteArray();
        QTest::newRow("dot dot") << QString(" .. ") << QByteArray("a") << invalid << QByteArray();
        QTest::newRow("NUL") << QString("a") + QChar(0) + "b" << QByteArray("a") << invalid
                             << QByteArray();
        QTest::newRow("three dots are a name")
            << QString("...") << QByteArray("a") << rename << QByteArray("...");
        // Bytes that are not UTF-8 show as U+FFFD and stay themselves where left in place.
        QTest::newRow("only the extension changed")
            << QString("caf\ufffd.md") << QByteArray("caf\xe9.txt") << rename
            << QByteArray("caf\xe9.md");
        QTest::newRow("left as shown")
            << QString("caf\ufffd.txt") << QByteArray("caf\xe9.txt") << nothing << QByteArray();
        QTest::newRow("replacement typed anew")
            << QString("x\ufffd\ufffd") << QByteArray("\xff\xfe") << rename
            << QByteArray("x\xff\xfe");
        QTest::newRow("one of two removed")
            << QString("a\ufffd") << QByteArray("a\xff\xfe") << rename << QByteArray("a\xff");
        QTest::newRow("a real U+FFFD stays one")
            << QString("\ufffd\ufffd") << QByteArray("\xef\xbf\xbd") << rename
            << QByteArray("\xef\xbf\xbd\xef\xbf\xbd");
        QTest::newRow("line breaks kept")
            << QString("\na\nb\n") << QByteArray("a") << rename << QByteArray("\na\nb\n");
    }
    void renameRequests() {
        QFETCH(QString, typed);
        QFETCH(QByteArray, old);
        QFETCH(int, kind);
        QFETCH(QByteArray, newName);
        const RenameRequest request = renameRequest(typed, old);
        QCOMPARE(int(request.kind), kind);
        QCOMPARE(request.newName, newName);
    }
};

QTEST_APPLESS_MAIN(TestItemNaming)
#include "tst_itemnaming.moc"
