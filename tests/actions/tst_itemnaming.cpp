// The naming rules of rename, duplicate and compress, as tables.
#include "actions/ItemNaming.h"

#include <QSet>
#include <QTest>

class TestItemNaming : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void duplicateNames_data() {
        QTest::addColumn<QByteArray>("item");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::newRow("file") << QByteArray("report.pdf") << QByteArray("report copy.pdf")
                              << QByteArray("report copy 2.pdf");
        QTest::newRow("folder") << QByteArray("Photos") << QByteArray("Photos copy")
                                << QByteArray("Photos copy 2");
        QTest::newRow("two extensions")
            << QByteArray("archive.tar.gz") << QByteArray("archive.tar copy.gz")
            << QByteArray("archive.tar copy 2.gz");
        QTest::newRow("package") << QByteArray("Tool.app") << QByteArray("Tool copy.app")
                                 << QByteArray("Tool copy 2.app");
        QTest::newRow("dotted folder")
            << QByteArray("Backup.2024") << QByteArray("Backup copy.2024")
            << QByteArray("Backup copy 2.2024");
        QTest::newRow("no extension")
            << QByteArray("README") << QByteArray("README copy") << QByteArray("README copy 2");
        QTest::newRow("leading dot only")
            << QByteArray(".bashrc") << QByteArray(".bashrc copy") << QByteArray(".bashrc copy 2");
        QTest::newRow("leading dot and extension")
            << QByteArray(".config.json") << QByteArray(".config copy.json")
            << QByteArray(".config copy 2.json");
        QTest::newRow("trailing dot")
            << QByteArray("notes.") << QByteArray("notes. copy") << QByteArray("notes. copy 2");
        QTest::newRow("dots only")
            << QByteArray("...") << QByteArray("... copy") << QByteArray("... copy 2");
        QTest::newRow("bytes not UTF-8")
            << QByteArray("caf\xe9.txt") << QByteArray("caf\xe9 copy.txt")
            << QByteArray("caf\xe9 copy 2.txt");
    }
    void duplicateNames() {
        QFETCH(QByteArray, item);
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QCOMPARE(duplicateName(item, 1), first);
        QCOMPARE(duplicateName(item, 2), second);
        QCOMPARE(duplicateName(item, 12), second.replace(" 2", " 12"));
    }

    void archiveNames_data() {
        QTest::addColumn<QByteArray>("item");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::newRow("file") << QByteArray("report.pdf") << QByteArray("report.zip")
                              << QByteArray("report 2.zip");
        QTest::newRow("folder") << QByteArray("Photos") << QByteArray("Photos.zip")
                                << QByteArray("Photos 2.zip");
        QTest::newRow("two extensions")
            << QByteArray("archive.tar.gz") << QByteArray("archive.tar.zip")
            << QByteArray("archive.tar 2.zip");
        QTest::newRow("package") << QByteArray("Tool.app") << QByteArray("Tool.zip")
                                 << QByteArray("Tool 2.zip");
        QTest::newRow("leading dot only")
            << QByteArray(".bashrc") << QByteArray(".bashrc.zip") << QByteArray(".bashrc 2.zip");
        QTest::newRow("trailing dot")
            << QByteArray("notes.") << QByteArray("notes..zip") << QByteArray("notes. 2.zip");
    }
    void archiveNames() {
        QFETCH(QByteArray, item);
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QCOMPARE(archiveName(item, 1), first);
        QCOMPARE(archiveName(item, 2), second);
    }

    // The first free name wins; the counter 1 is never written; a gap is filled.
    void firstFree_data() {
        QTest::addColumn<QList<QByteArray>>("taken");
        QTest::addColumn<QByteArray>("chosen");
        QTest::newRow("nothing taken") << QList<QByteArray>{} << QByteArray("report.zip");
        QTest::newRow("first taken")
            << QList<QByteArray>{"report.zip"} << QByteArray("report 2.zip");
        QTest::newRow("two taken")
            << QList<QByteArray>{"report.zip", "report 2.zip"} << QByteArray("report 3.zip");
        QTest::newRow("gap") << QList<QByteArray>{"report.zip", "report 3.zip"}
                             << QByteArray("report 2.zip");
    }
    void firstFree() {
        QFETCH(QList<QByteArray>, taken);
        QFETCH(QByteArray, chosen);
        const auto candidate = [](int n) { return archiveName("report.pdf", n); };
        QCOMPARE(
            firstFreeName(candidate, [&](const QByteArray& name) { return taken.contains(name); }),
            chosen);
    }

    void trimming_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("trimmed");
        QTest::newRow("spaces") << "  a b  "
                                << "a b";
        QTest::newRow("tabs") << "\ta\t"
                              << "a";
        QTest::newRow("no-break and ideographic spaces") << "\u00a0a\u3000"
                                                         << "a";
        QTest::newRow("em and thin spaces") << "\u2003a\u2009"
                                            << "a";
        QTest::newRow("line breaks stay") << "\na\n"
                                          << "\na\n";
        QTest::newRow("only spaces") << " \t "
                                     << "";
    }
    void trimming() {
        QFETCH(QString, typed);
        QFETCH(QString, trimmed);
        QCOMPARE(trimHorizontalSpace(typed), trimmed);
    }

    void renameRequests_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("old");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("newName");
        const int nothing = RenameRequest::Nothing, invalid = RenameRequest::Invalid,
                  rename = RenameRequest::Rename;
        QTest::newRow("unchanged") << "a.txt"
                                   << "a.txt" << nothing << QByteArray();
        QTest::newRow("spaces around") << "  a.txt\t"
                                       << "a.txt" << nothing << QByteArray();
        QTest::newRow("empty") << ""
                               << "a.txt" << nothing << QByteArray();
        QTest::newRow("only spaces") << "   "
                                     << "a.txt" << nothing << QByteArray();
        QTest::newRow("decomposed is the same") << "cafe\u0301"
                                                << "caf\u00e9" << nothing << QByteArray();
        QTest::newRow("case is a change") << "photo.jpg"
                                          << "photo.JPG" << rename << QByteArray("photo.jpg");
        QTest::newRow("trimmed new name") << " b.txt "
                                          << "a.txt" << rename << QByteArray("b.txt");
        QTest::newRow("UTF-8 bytes") << "Ünïcode"
                                     << "a" << rename
                                     << QByteArray("\xc3\x9c"
                                                   "n\xc3\xaf"
                                                   "code");
        QTest::newRow("slash") << "sub/b"
                               << "a" << invalid << QByteArray();
        QTest::newRow("leading slash") << "/tmp/b"
                                       << "a" << invalid << QByteArray();
        QTest::newRow("dot") << "."
                             << "a" << invalid << QByteArray();
        QTest::newRow("dot dot") << " .. "
                                 << "a" << invalid << QByteArray();
        QTest::newRow("NUL") << QString("a") + QChar(0) + "b"
                             << "a" << invalid << QByteArray();
        QTest::newRow("three dots are a name") << "..."
                                               << "a" << rename << QByteArray("...");
        QTest::newRow("line break kept") << "a\nb"
                                         << "a" << rename << QByteArray("a\nb");
    }
    void renameRequests() {
        QFETCH(QString, typed);
        QFETCH(QString, old);
        QFETCH(int, kind);
        QFETCH(QByteArray, newName);
        const RenameRequest request = renameRequest(typed, old);
        QCOMPARE(int(request.kind), kind);
        QCOMPARE(request.newName, newName);
    }
};

QTEST_APPLESS_MAIN(TestItemNaming)
#include "tst_itemnaming.moc"
