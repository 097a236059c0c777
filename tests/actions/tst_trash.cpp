// SPDX-License-Identifier: GPL-2.0-or-later
// Move to Trash: where the desktop's file manager would put the item, checked with the
// trash tools of other desktops (trash-cli), which must list and restore it intact.
#include "LoopImage.h"
#include "TempTree.h"
#include "window/WindowFixture.h"

#include <QDateTime>
#include <QProcess>

using namespace temptree;

namespace {

// Content (or for a folder, everything inside), mode and modification time.
QByteArray facts(const QByteArray& path) {
    return runForOutput("/usr/bin/find", {path, "-printf", "%P %M %s %T@\\n"}).value_or("") +
           runForOutput("/bin/cat", {"--", path}).value_or("");
}

QByteArray runWithInput(const QString& program, const QStringList& arguments,
                        const QByteArray& input) {
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(30000);
    return process.readAllStandardOutput();
}

bool exists(const QByteArray& path) {
    struct stat info {};
    return lstat(path.constData(), &info) == 0;
}

// The one .trashinfo of a trash folder, as key=value (read by bytes: its name is the
// item's, which need not be UTF-8).
QHash<QByteArray, QByteArray> trashInfo(const QByteArray& trash) {
    QHash<QByteArray, QByteArray> keys;
    const QList<QByteArray> infos =
        runForOutput("/bin/ls", {"--", trash + "/info"}).value_or("").trimmed().split('\n');
    if (infos.size() != 1)
        return keys;
    const QByteArray text =
        runForOutput("/bin/cat", {trash + "/info/" + infos.first()}).value_or("");
    for (const QByteArray& line : text.split('\n'))
        if (const qsizetype equals = line.indexOf('='); equals > 0)
            keys.insert(line.left(equals), line.mid(equals + 1));
    return keys;
}

} // namespace

class TestTrash : public QObject {
    Q_OBJECT
    Dir tmp;
    const QByteArray homeTrash = qgetenv("XDG_DATA_HOME") + "/Trash";

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void trashesAndRestores_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("folder");
        QTest::addColumn<bool>("otherVolume");
        QTest::newRow("file") << QByteArray("report 100%.pdf") << false << false;
        QTest::newRow("name not UTF-8") << QByteArray("caf\xe9") << false << false;
        QTest::newRow("folder") << QByteArray("Photos") << true << false;
        QTest::newRow("loop-mounted ext4") << QByteArray("on volume") << false << true;
    }
    void trashesAndRestores() {
        QFETCH(QByteArray, name);
        QFETCH(bool, folder);
        QFETCH(bool, otherVolume);
        LoopImage image;
        if (otherVolume)
            LOOP_MOUNT_OR_SKIP(image, "OTHER");
        const QByteArray place = otherVolume ? image.mountPoint : tmp.freshFolder();
        const QByteArray item = join(place, name);
        if (folder) {
            makeDir(item);
            writeFile(join(item, "inside"), 5000);
        } else {
            writeFile(item, 3000);
        }
        chmod(item.constData(), folder ? 0750 : 0640);
        const timespec times[2] = {{1500000000, 0}, {1500000000, 250000000}};
        utimensat(AT_FDCWD, item.constData(), times, 0);
        const QByteArray before = facts(item);
        runForOutput("/bin/rm", {"-rf", "--", homeTrash});

        WindowFixture f;
        f.window->show();
        f.openPath(place);
        QVERIFY(f.settled());
        f.picked = f.itemAt(f.childNamed(f.rootIndex(), name));
        QVERIFY(f.picked.isValid());
        f.actions->trash(f.picked);
        QTRY_VERIFY(f.listed(f.rootId()) && !f.rowNames(f.rootIndex()).contains(name));
        QVERIFY(!exists(item));

        // The trash of the item's own file system, with the path percent-encoded from
        // the bytes (relative to the top of that file system there) and the local time.
        const QByteArray trash = otherVolume ? place + "/.Trash-0" : homeTrash;
        const auto info = trashInfo(trash);
        QCOMPARE(QByteArray::fromPercentEncoding(info.value("Path")), otherVolume ? name : item);
        const QDateTime deleted =
            QDateTime::fromString(QString(info.value("DeletionDate")), Qt::ISODate);
        QVERIFY(deleted.isValid());
        QVERIFY(qAbs(deleted.secsTo(QDateTime::currentDateTime())) < 600);
        QVERIFY(exists(trash + "/files/" + name));

        // trash-cli shows the original path; its restore brings back content, mode and
        // time. It renders a name that is not UTF-8 as text (U+FFFD for the bad byte)
        // and restores under that rendering: its limit, not the trash's.
        const QString shown = QString::fromUtf8(item);
        QVERIFY2(QString::fromUtf8(runForOutput("/usr/bin/trash-list", {}).value_or(""))
                     .contains(u' ' + shown + u'\n'),
                 qPrintable(shown));
        runWithInput("/usr/bin/trash-restore", {QFile::decodeName(place)}, "0\n");
        QCOMPARE(facts(shown.toUtf8()), before);
    }

    // On another file system whose top has no trash that can be used, the item stays:
    // it is never copied into the home trash.
    void noTrashOnItsFileSystem() {
        LoopImage image;
        LOOP_MOUNT_OR_SKIP(image, "NOTRASH");
        const QByteArray place = image.mountPoint;
        writeFile(join(place, "stays"), 1000);
        writeFile(join(place, ".Trash-0"), 1); // a file where the trash folder would be
        runForOutput("/bin/rm", {"-rf", "--", homeTrash});
        WindowFixture f;
        f.window->show();
        f.openPath(place);
        QVERIFY(f.settled());
        f.picked = f.itemAt(f.childNamed(f.rootIndex(), "stays"));
        f.actions->trash(f.picked);
        // The folder is listed again after the attempt (new entries), the row still there.
        QTRY_VERIFY(f.listed(f.rootId()) && f.childNamed(f.rootIndex(), "stays").isValid() &&
                    f.entryAt(f.childNamed(f.rootIndex(), "stays")) != f.picked.id);
        QVERIFY(QFileInfo::exists(QFile::decodeName(join(place, "stays"))));
        QVERIFY(!QFileInfo::exists(QFile::decodeName(homeTrash + "/files/stays")));
    }
};

int main(int argc, char** argv) {
    // GLib and trash-cli read these once: the home trash is the test's own, and local
    // time is five hours off UTC so that a UTC deletion date would show.
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path()) + "/data");
    qputenv("TZ", "XYZ-5");
    QApplication app(argc, argv);
    TestTrash test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_trash.moc"
