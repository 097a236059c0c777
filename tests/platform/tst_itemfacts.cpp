// SPDX-License-Identifier: GPL-2.0-or-later
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
        else if (kind == "huge file") {
            writeFile(path, 1000);
            if (truncate(path.constData(), 50LL * 1024 * 1024 * 1024) != 0)
                return {};
        } else if (kind == "fifo")
            mkfifo(path.constData(), 0640);
        else if (kind == "socket") {
            const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address{AF_UNIX, {}};
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

    // Items of every kind and mode, described as stat describes them. Plain files, FIFOs
    // and links (with their targets), and names that are not UTF-8 or hold quotes, are
    // held to stat through the properties window in tst_itemwindows.
    void factsMatchStat_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("mimeType");
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
        QTest::newRow("socket") << QByteArray("sock") << QByteArray("socket") << 0755
                                << "inode/socket";
    }
    void factsMatchStat() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, kind);
        QFETCH(int, mode);
        QFETCH(QString, mimeType);
        const QByteArray path = make(name, kind);
        QCOMPARE(chmod(path.constData(), mode_t(mode)), 0);
        // Taken first: the type is guessed from the content, and reading it may move the
        // access time on.
        const qint64 accessed = statField(path, "%X").toLongLong();
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
        QCOMPARE(facts.accessed.toSecsSinceEpoch(), accessed);
        QCOMPARE(facts.mimeType, mimeType);
    }

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
        // Nothing when asked to stop, or when there is nothing there.
        QVERIFY(!tallyFolder(join(folder, "no such folder"), stop));
        QVERIFY(!readItemFacts(join(folder, "no such item")).found);
        stop = true;
        QVERIFY(!tallyFolder(root, stop));
    }

    // Only regular files are read, and of a huge one only what is asked for; a FIFO
    // without a writer would block a plain open. Not through a link either: the
    // preview's own test has one (tst_itemwindows).
    void onlyRegularFilesAreRead_data() {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<bool>("read");
        QTest::newRow("file") << QByteArray("file") << true;
        QTest::newRow("50 GiB file") << QByteArray("huge file") << true;
        QTest::newRow("fifo") << QByteArray("fifo") << false;
        QTest::newRow("folder") << QByteArray("folder") << false;
        QTest::newRow("socket") << QByteArray("socket") << false;
    }
    void onlyRegularFilesAreRead() {
        QFETCH(QByteArray, kind);
        QFETCH(bool, read);
        const std::optional<QByteArray> start =
            readRegularFilePrefix(make("read-" + kind, kind), 64);
        QCOMPARE(bool(start), read);
        if (read)
            QCOMPARE(*start, QByteArray(64, 'x'));
    }

    // A type's description from the desktop's MIME database, and a date in the long form,
    // in the interface languages; English and German are shown in tst_itemwindows.
    void inTheLanguage_data() {
        QTest::addColumn<QString>("mimeType"); // empty: 2024-03-05 14:03:11 in Berlin
        QTest::addColumn<Lang>("lang");
        QTest::addColumn<QString>("text");
        QTest::newRow("folder, zh uses zh_CN") << "inode/directory" << Lang::zh << "文件夹";
        QTest::newRow("folder, pt uses pt_BR") << "inode/directory" << Lang::pt << "Pasta";
        QTest::newRow("pipe, fr") << "inode/fifo" << Lang::fr << "Tube";
        QTest::newRow("png, ja") << "image/png" << Lang::ja << "PNG 画像";
        QTest::newRow("unknown type") << "application/x-no-such-type" << Lang::en << "";
        QTest::newRow("date, ja") << "" << Lang::ja << "2024年3月5日火曜日 14時03分11秒 CET";
        QTest::newRow("date, ru") << "" << Lang::ru << "вторник, 5 марта 2024 г. 14:03:11 CET";
    }
    void inTheLanguage() {
        QFETCH(QString, mimeType);
        QFETCH(Lang, lang);
        QFETCH(QString, text);
        qputenv("TZ", "Europe/Berlin");
        tzset();
        QCOMPARE(mimeType.isEmpty()
                     ? formatDateTime(QDateTime::fromSecsSinceEpoch(1709643791), lang)
                     : describeIn(mimeComments(mimeType), lang),
                 text);
    }
};

QTEST_GUILESS_MAIN(TestItemFacts)
#include "tst_itemfacts.moc"
