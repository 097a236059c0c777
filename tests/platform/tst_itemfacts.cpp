// What is read about an item for its preview and properties, against the system's own
// tools (stat, du, find) on real files of every kind, and the safe way files are read.
#include "TempTree.h"
#include "platform/ItemFacts.h"
#include "platform/MimeComments.h"
#include "platform/SafeRead.h"
#include "text/LangLocale.h"

#include <QTest>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace temptree;

namespace {

// One field of GNU stat's output for the item itself.
QByteArray statField(const QByteArray& path, const char* format) {
    return runForOutput("/usr/bin/stat", {"-c", format, "--", path}).value_or("?").trimmed();
}

qint64 number(const std::optional<QByteArray>& output) {
    return output ? output->split('\t').first().trimmed().toLongLong() : -1;
}

} // namespace

class TestItemFacts : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray folder;

    QByteArray make(const QByteArray& name, const QByteArray& kind) {
        const QByteArray path = join(folder, name);
        if (kind == "file")
            writeFile(path, 5000);
        else if (kind == "folder")
            makeDir(path);
        else if (kind == "fifo")
            mkfifo(path.constData(), 0640);
        else if (kind == "link")
            symlink("target/elsewhere", path.constData());
        else if (kind == "socket") {
            const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
            bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
            close(fd);
        }
        return path;
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        folder = tmp.freshFolder();
    }

    // Every kind of item, described as stat describes it.
    void factsMatchStat_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("mimeType");
        QTest::newRow("file") << QByteArray("plain.txt") << QByteArray("file") << 0644
                              << "text/plain";
        QTest::newRow("setuid, no execute for others")
            << QByteArray("tool") << QByteArray("file") << 04754 << "text/plain";
        QTest::newRow("setgid without group execute")
            << QByteArray("odd") << QByteArray("file") << 02640 << "text/plain";
        // Unreadable but to root: then only the name tells, and it tells nothing.
        QTest::newRow("nothing allowed")
            << QByteArray("locked") << QByteArray("file") << 0
            << (geteuid() == 0 ? "text/plain" : "application/octet-stream");
        QTest::newRow("sticky folder")
            << QByteArray("shared") << QByteArray("folder") << 01777 << "inode/directory";
        QTest::newRow("sticky without execute")
            << QByteArray("stuck") << QByteArray("folder") << 01776 << "inode/directory";
        QTest::newRow("fifo") << QByteArray("pipe") << QByteArray("fifo") << 0640 << "inode/fifo";
        QTest::newRow("symbolic link")
            << QByteArray("link") << QByteArray("link") << -1 << "inode/symlink";
        QTest::newRow("socket") << QByteArray("sock") << QByteArray("socket") << 0755
                                << "inode/socket";
        QTest::newRow("name not UTF-8")
            << QByteArray("caf\xe9.txt") << QByteArray("file") << 0600 << "text/plain";
        QTest::newRow("quotes, backslash, line break")
            << QByteArray("a \"b\" \\ c\nd.txt") << QByteArray("file") << 0644 << "text/plain";
    }
    void factsMatchStat() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, kind);
        QFETCH(int, mode);
        QFETCH(QString, mimeType);
        const QByteArray path = make(name, kind);
        if (mode >= 0)
            QCOMPARE(chmod(path.constData(), mode_t(mode)), 0);
        const ItemFacts facts = readItemFacts(path);
        QVERIFY(facts.found);
        QCOMPARE(permissionText(facts.mode).toLatin1(), statField(path, "%A"));
        QCOMPARE(facts.owner.toLatin1(), statField(path, "%U"));
        QCOMPARE(facts.group.toLatin1(), statField(path, "%G"));
        QCOMPARE(facts.apparentBytes, statField(path, "%s").toLongLong());
        QCOMPARE(facts.allocatedBytes,
                 statField(path, "%b").toLongLong() * statField(path, "%B").toLongLong());
        QCOMPARE(facts.modified.toSecsSinceEpoch(), statField(path, "%Y").toLongLong());
        QCOMPARE(facts.changed.toSecsSinceEpoch(), statField(path, "%Z").toLongLong());
        QCOMPARE(facts.accessed.toSecsSinceEpoch(), statField(path, "%X").toLongLong());
        QCOMPARE(facts.mimeType, mimeType);
        QCOMPARE(facts.linkTarget, kind == "link" ? QByteArray("target/elsewhere") : QByteArray());
    }

    void missingItem() { QVERIFY(!readItemFacts(join(folder, "no such item")).found); }

    // A folder's contents against find (items) and du (sizes, hard links once).
    void tallyMatchesFindAndDu() {
        const QByteArray root = join(folder, "tallied");
        makeDir(root);
        makeDir(join(root, "deeper"));
        makeDir(join(root, "deeper/deepest"));
        writeFile(join(root, "deeper/deepest/data"), 300000);
        writeFile(join(root, "small"), 10);
        writeFile(join(root, "caf\xe9"), 7000);
        QCOMPARE(link(join(root, "small").constData(), join(root, "deeper/hard").constData()), 0);
        symlink("/nowhere", join(root, "dangling").constData());
        mkfifo(join(root, "pipe").constData(), 0600);

        std::atomic<bool> stop{false};
        const std::optional<FolderTally> tally = tallyFolder(root, stop);
        QVERIFY(tally);
        const auto found = runForOutput("/usr/bin/find", {root, "-mindepth", "1", "-printf", "x"});
        QCOMPARE(tally->items, qint64(found.value_or("").size()));
        QCOMPARE(tally->items, 8);
        QCOMPARE(tally->allocatedBytes, number(runForOutput("/usr/bin/du", {"-s", "-B1", root})));
        QCOMPARE(tally->apparentBytes, number(runForOutput("/usr/bin/du", {"-s", "-b", root})));
    }

    void tallyStopsWhenAsked() {
        std::atomic<bool> stop{true};
        QVERIFY(!tallyFolder(folder, stop));
        std::atomic<bool> go{false};
        QVERIFY(!tallyFolder(join(folder, "no such folder"), go));
    }

    // Only regular files are read; a FIFO without a writer would block a plain open.
    void onlyRegularFilesAreRead_data() {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<bool>("read");
        QTest::newRow("file") << QByteArray("file") << true;
        QTest::newRow("fifo") << QByteArray("fifo") << false;
        QTest::newRow("folder") << QByteArray("folder") << false;
        QTest::newRow("link to a file") << QByteArray("link to file") << false;
        QTest::newRow("socket") << QByteArray("socket") << false;
    }
    void onlyRegularFilesAreRead() {
        QFETCH(QByteArray, kind);
        QFETCH(bool, read);
        const QByteArray name = "read-" + kind;
        QByteArray path;
        if (kind == "link to file") {
            writeFile(join(folder, "read-target"), 100);
            path = join(folder, name);
            QCOMPARE(symlink("read-target", path.constData()), 0);
        } else {
            path = make(name, kind);
        }
        const std::optional<QByteArray> start = readRegularFilePrefix(path, 64);
        QCOMPARE(bool(start), read);
        if (read)
            QCOMPARE(*start, QByteArray(64, 'x'));
    }

    // A huge file costs only what is asked for.
    void prefixOfAHugeFile() {
        const QByteArray path = join(folder, "huge");
        writeFile(path, 1000);
        QCOMPARE(truncate(path.constData(), 50LL * 1024 * 1024 * 1024), 0);
        const std::optional<QByteArray> start = readRegularFilePrefix(path, 4096);
        QVERIFY(start);
        QCOMPARE(start->size(), 4096);
        QCOMPARE(start->left(1000), QByteArray(1000, 'x'));
    }

    // The descriptions of a type in the interface languages, from the desktop's MIME
    // database.
    void typeDescriptions_data() {
        QTest::addColumn<QString>("mimeType");
        QTest::addColumn<Lang>("lang");
        QTest::addColumn<QString>("text");
        QTest::newRow("folder, en") << "inode/directory" << Lang::en << "Folder";
        QTest::newRow("folder, de") << "inode/directory" << Lang::de << "Ordner";
        QTest::newRow("folder, zh uses zh_CN") << "inode/directory" << Lang::zh << "文件夹";
        QTest::newRow("folder, pt uses pt_BR") << "inode/directory" << Lang::pt << "Pasta";
        QTest::newRow("pipe, fr") << "inode/fifo" << Lang::fr << "Tube";
        QTest::newRow("png, ja") << "image/png" << Lang::ja << "PNG 画像";
        QTest::newRow("unknown type") << "application/x-no-such-type" << Lang::en << "";
    }
    void typeDescriptions() {
        QFETCH(QString, mimeType);
        QFETCH(Lang, lang);
        QFETCH(QString, text);
        QCOMPARE(describeIn(mimeComments(mimeType), lang), text);
    }

    // Dates in the interface language's own long form.
    void datesInTheLanguage_data() {
        QTest::addColumn<Lang>("lang");
        QTest::addColumn<QString>("text");
        QTest::newRow("en") << Lang::en << "Tuesday, March 5, 2024 2:03:11 PM CET";
        QTest::newRow("de") << Lang::de << "Dienstag, 5. März 2024 14:03:11 CET";
        QTest::newRow("ja") << Lang::ja << "2024年3月5日火曜日 14時03分11秒 CET";
        QTest::newRow("ru") << Lang::ru << "вторник, 5 марта 2024 г. 14:03:11 CET";
    }
    void datesInTheLanguage() {
        QFETCH(Lang, lang);
        QFETCH(QString, text);
        qputenv("TZ", "Europe/Berlin");
        tzset();
        QCOMPARE(formatDateTime(QDateTime::fromSecsSinceEpoch(1709643791), lang), text);
    }
};

QTEST_GUILESS_MAIN(TestItemFacts)
#include "tst_itemfacts.moc"
