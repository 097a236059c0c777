// SPDX-License-Identifier: GPL-2.0-or-later
// Esc while the window measures a slow volume (a FUSE mount whose every look-up and
// listing takes a few milliseconds): every walk ends at once and no worker goes on past
// the call it is caught in, the program then rests, and what was not measured says so on
// screen and to a screen reader, while what was measured is what du says.
#include "TempTree.h"
#include "WindowFixture.h"
#include "text/SizeText.h"

#include <QAccessible>
#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QThreadPool>
#include <QTimer>
#include <csignal>
#include <ctime>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace temptree;

namespace {

constexpr int kDelayMs = 5;

qint64 monotonicNs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000ll + now.tv_nsec;
}

qint64 cpuUs() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000000ll + usage.ru_utime.tv_usec +
           usage.ru_stime.tv_usec;
}

bool isMountPoint(const QByteArray& path) {
    struct stat at {};
    struct stat above {};
    return stat(path.constData(), &at) == 0 && stat((path + "/..").constData(), &above) == 0 &&
           at.st_dev != above.st_dev;
}

// The generated tree of tests/window/slowfs.cpp, mounted in the test's own namespace;
// the server logs the start of every slowed call.
class SlowMount {
public:
    QByteArray log;

    ~SlowMount() {
        if (server.state() == QProcess::NotRunning)
            return;
        server.terminate(); // unmounts
        if (!server.waitForFinished(5000)) {
            server.kill();
            server.waitForFinished();
        }
    }

    // Mounts at the (existing, empty) folder. Returns why it cannot be had here, if so.
    QString mount(const QByteArray& at, const QByteArray& logFile) {
#ifndef SLOWFS_BINARY
        Q_UNUSED(at);
        Q_UNUSED(logFile);
        return QStringLiteral("built without libfuse3 (Debian: libfuse3-dev and fuse3; "
                              "tools/setup.sh installs them): no slow file system to mount");
#else
        if (geteuid() != 0)
            return QStringLiteral("a FUSE mount of our own needs root");
        if (QFileInfo(QStringLiteral("/proc/self/ns/mnt")).symLinkTarget() ==
            QFileInfo(QStringLiteral("/proc/1/ns/mnt")).symLinkTarget())
            return QStringLiteral("not in a mount namespace of our own: the mount would be seen "
                                  "by the whole machine (run through in-own-mount-namespace.sh)");
        if (access("/dev/fuse", R_OK | W_OK) != 0)
            return QStringLiteral("no /dev/fuse here");
        log = logFile;
        server.setProcessChannelMode(QProcess::ForwardedChannels);
        server.start(QStringLiteral(SLOWFS_BINARY),
                     {QFile::decodeName(at), QString::number(kDelayMs), QFile::decodeName(log)});
        (void)QTest::qWaitFor(
            [&] { return server.state() == QProcess::NotRunning || isMountPoint(at); }, 10000);
        return isMountPoint(at) ? QString()
                                : QStringLiteral("the FUSE mount was refused here (see above)");
#endif
    }
    // Every call answers at once from now on.
    void speedUp() {
        kill(pid_t(server.processId()), SIGUSR1);
    }
    // The slowed calls that began after the moment (monotonic ns), each as its name and
    // how long after the moment it began.
    QStringList callsSince(qint64 since) const {
        QFile file(QFile::decodeName(log));
        QStringList calls;
        if (!file.open(QIODevice::ReadOnly))
            return {QStringLiteral("no log")};
        for (const QByteArray& line : file.readAll().split('\n'))
            if (const QList<QByteArray> parts = line.split(' ');
                parts.size() == 3 && parts[0].toLongLong() > since)
                calls << QString::fromLatin1(parts[2]) +
                             QStringLiteral(" +%1 ms").arg((parts[0].toLongLong() - since) / 1e6, 0,
                                                           'f', 1);
        return calls;
    }

private:
    QProcess server;
};

// The timers that go off in the application while it lives, but for the one given.
struct TimerWakeUps : QObject {
    explicit TimerWakeUps(const QObject* own) : own(own) { qApp->installEventFilter(this); }
    bool eventFilter(QObject* receiver, QEvent* event) override {
        if (event->type() == QEvent::Timer && receiver != own)
            receivers << QString::fromLatin1(receiver->metaObject()->className());
        return false;
    }
    const QObject* const own;
    QStringList receivers;
};

// du's figure (KiB) for every file and folder below `path`, by path. Without hard links
// in the tree, a folder's line is what `du -sk` of that folder says.
QHash<QByteArray, qint64> duAll(const QByteArray& path) {
    QProcess du;
    du.start(QStringLiteral("/usr/bin/du"), {QStringLiteral("-ak"), QFile::decodeName(path)});
    du.waitForFinished(60000); // it complains about the locked folder, and goes on
    QHash<QByteArray, qint64> kib;
    for (const QByteArray& line : du.readAllStandardOutput().split('\n'))
        if (const qsizetype tab = line.indexOf('\t'); tab > 0)
            kib.insert(line.mid(tab + 1), line.left(tab).toLongLong());
    return kib;
}

bool isFinal(const SizeIndex& index, EntryId id) {
    return !index.isFolder(id) || (index.state(id) & (Measured | Partial)) == Measured;
}

} // namespace

class TestStopOnSlowMount : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray folder, mountPoint;
    SlowMount slow;
    std::unique_ptr<WindowFixture> f;
    // What was measured around the Esc.
    qint64 escNs = 0, keyHandledNs = 0, workersGoneNs = 0;
    qint64 cpuAfterUs[2] = {};
    QStringList timersAtRest;
    int workersAtEsc = 0;
    QStringList callsAfterEsc;
    bool walkingAfterKey = true;

    EntryId entryAt(const QByteArray& relative) {
        EntryId at = f->rootId();
        for (const QByteArray& name : relative.split('/'))
            if (!name.isEmpty())
                at = f->entryAt(f->childNamed(f->model().indexOf(at), name));
        return at;
    }
    QString text(EntryId id, int column, int role = Qt::DisplayRole) {
        return f->model().data(f->model().indexOf(id, column), role).toString();
    }
    // Every row the outline has, depth first.
    QList<EntryId> rows(const QModelIndex& parent = {}) {
        QList<EntryId> all;
        for (int row = 0; row < f->model().rowCount(parent); ++row) {
            const QModelIndex at = f->model().index(row, 0, parent);
            all << f->entryAt(at) << rows(at);
        }
        return all;
    }
    // A shown folder in the slow volume, without marks, final or not.
    EntryId plainFolder(bool final) {
        for (const EntryId id : rows())
            if (f->index().isFolder(id) && f->index().pathOf(id).startsWith(mountPoint + '/') &&
                !(f->index().state(id) & (Unreadable | OtherVolume)) &&
                isFinal(f->index(), id) == final)
                return id;
        return kNoEntry;
    }

private Q_SLOTS:
    // The window shows the folder holding the slow volume; once the walk is well under way
    // (entries counted, rows shown, some folders measured, the locked one tried), Esc.
    void initTestCase() {
        QVERIFY(tmp.isValid());
        folder = tmp.freshFolder();
        mountPoint = join(folder, "slow");
        makeDir(mountPoint);
        if (const QString skip = slow.mount(mountPoint, join(tmp.bytes(), "calls.log"));
            !skip.isEmpty())
            QSKIP(qPrintable(skip));

        // Without the model tester, which would open every folder.
        f = std::make_unique<WindowFixture>(false);
        f->window->show();
        QVERIFY(QTest::qWaitForWindowActive(f->window));
        f->openPath(folder);
        QTRY_VERIFY(f->childNamed(f->rootIndex(), "slow").isValid());
        f->outline->expand(f->childNamed(f->rootIndex(), "slow"));
        QVERIFY(QTest::qWaitFor(
            [&] {
                if (f->tree.itemsWalked() < 400 || !f->model().hasRows(entryAt("slow")))
                    return false;
                int measured = 0;
                for (EntryId id = 0; id < EntryId(f->index().size()); ++id)
                    measured += f->index().isFolder(id) && (f->index().state(id) & Measured);
                return measured >= 4 && (f->index().state(entryAt("slow/locked")) & Unreadable);
            },
            30000));
        QVERIFY(f->tree.isWalking());

        f->outline->setFocus();
        workersAtEsc = f->tree.busyWorkers();
        escNs = monotonicNs();
        QTest::keyClick(f->outline, Qt::Key_Escape);
        keyHandledNs = monotonicNs();
        walkingAfterKey = f->tree.isWalking();
        // Watched without the event loop: the workers need nothing from it to end.
        while ((f->tree.busyWorkers() > 0 || f->tree.workers().activeThreadCount() > 0) &&
               monotonicNs() - escNs < 5000000000ll)
            QThread::usleep(100);
        workersGoneNs = monotonicNs();

        // The event loop as the program runs it (QTest::qWait would poll it itself): the
        // second in which the stop's last results are taken in, then one at rest.
        for (qint64& used : cpuAfterUs) {
            QEventLoop idle;
            QTimer second;
            second.setSingleShot(true);
            connect(&second, &QTimer::timeout, &idle, &QEventLoop::quit);
            const TimerWakeUps timers(&second);
            second.start(1000);
            const qint64 before = cpuUs();
            idle.exec();
            used = cpuUs() - before;
            timersAtRest = timers.receivers;
        }
        callsAfterEsc = slow.callsSince(escNs);
        qInfo("Esc handled in %.1f ms; last of %d busy workers gone %.1f ms after Esc; "
              "%d slowed FUSE calls (%d ms each) began after Esc %s; CPU in the second after: "
              "%.2f ms, in the next: %.2f ms",
              (keyHandledNs - escNs) / 1e6, workersAtEsc, (workersGoneNs - escNs) / 1e6,
              int(callsAfterEsc.size()), kDelayMs, qPrintable(callsAfterEsc.join(", ")),
              cpuAfterUs[0] / 1e3, cpuAfterUs[1] / 1e3);
    }
    void cleanupTestCase() { f.reset(); }

    // Once the key is handled no walk runs; within 200 ms every worker has left, having
    // begun at most the one call it may have been about to make.
    void everyWalkEndsAtOnce() {
        QVERIFY(!walkingAfterKey);
        QVERIFY(f->tree.wasStopped());
        QCOMPARE(f->tree.busyWorkers(), 0);
        QCOMPARE(f->tree.workers().activeThreadCount(), 0);
        QVERIFY2(workersGoneNs - escNs < 200000000ll,
                 qPrintable(QString::number((workersGoneNs - escNs) / 1e6) + " ms"));
        QVERIFY2(callsAfterEsc.size() <= workersAtEsc, qPrintable(callsAfterEsc.join(", ")));
    }

    // Stopped, the program rests: once the stop's last results are taken in (about 4 ms
    // of processor time here) no timer goes off and next to no time is used (0.1 ms a
    // second here; a timer left ticking five times a second costs 0.5 ms).
    void restsAfterStop() {
        QVERIFY2(cpuAfterUs[0] < 20000, qPrintable(QString::number(cpuAfterUs[0])));
        QVERIFY2(cpuAfterUs[1] < 2000, qPrintable(QString::number(cpuAfterUs[1])));
        QVERIFY2(timersAtRest.isEmpty(), qPrintable(timersAtRest.join(u' ')));
    }

    // The status line tells the stop, the entries found and what they hold.
    void statusLineSaysStopped() {
        static const QRegularExpression form(
            QStringLiteral("^(.+)  ·  Stopped  ·  (\\d+) items  ·  (.+) so far$"));
        const QRegularExpressionMatch said = form.match(f->status->text());
        QVERIFY2(said.hasMatch(), qPrintable(f->status->text()));
        QCOMPARE(said.captured(1), displayPath(folder));
        QCOMPARE(said.captured(2).toULongLong(), qulonglong(f->index().size() - 1));
        QCOMPARE(said.captured(3), humanSize(f->index().allocated(f->rootId())));
    }

    // With every folder that is not final opened, each row tells what it is: a final row
    // du's figure, any other "≥ " what was found, which du shows is not more than there is.
    void rowsTellWhatIsFinal() {
        QVERIFY(QTest::qWaitFor([&] {
            bool allOpen = true;
            for (const EntryId id : rows())
                if (f->index().isFolder(id) && !isFinal(f->index(), id) &&
                    f->index().childCount(id) > 0 && !f->model().hasRows(id)) {
                    f->outline->expand(f->model().indexOf(id));
                    allOpen = false;
                }
            return allOpen;
        }));
        QVERIFY(!f->tree.isWalking());
        slow.speedUp();
        const QHash<QByteArray, qint64> du = duAll(folder);
        QVERIFY(du.contains(folder) && du.contains(join(mountPoint, "locked")));
        int partial = 0, finalFolders = 0, files = 0;
        for (const EntryId id : rows()) {
            const QByteArray path = f->index().pathOf(id);
            QVERIFY2(du.contains(path), path.constData());
            const qint64 duBytes = du.value(path) * 1024;
            const QString size = text(id, TreeModel::SizeColumn);
            if (isFinal(f->index(), id)) {
                QCOMPARE(f->index().allocated(id), duBytes);
                QCOMPARE(size, humanSize(duBytes));
                (f->index().isFolder(id) ? finalFolders : files)++;
            } else {
                QCOMPARE(size, "≥ " + humanSize(f->index().allocated(id)));
                QVERIFY(text(id, 0, Qt::AccessibleDescriptionRole).contains("not fully measured"));
                QVERIFY2(f->index().allocated(id) <= duBytes, path.constData());
                ++partial;
            }
        }
        qInfo("rows checked: %d not final, %d final folders, %d files", partial, finalFolders,
              files);
        QVERIFY(partial >= 3 && finalFolders >= 3 && files >= 10);
    }

    // What a screen reader gets of a row: the name cell's description, the size cell's
    // text; and the icon of a folder that could not be read, or of another volume, carries
    // a mark that a plain folder's does not.
    void marksReadAloud_data() {
        QTest::addColumn<EntryId>("id");
        QTest::addColumn<QStringList>("said");
        QTest::addColumn<bool>("partial");
        QTest::addColumn<bool>("marked");
        const QString below = QStringLiteral("1 folders below could not be read");
        const QString partial = QStringLiteral("not fully measured");
        QTest::newRow("opened folder")
            << entryAt("") << QStringList{below, partial} << true << false;
        QTest::newRow("mount point")
            << entryAt("slow") << QStringList{"another volume: slowfs", below, partial} << true
            << true;
        QTest::newRow("unreadable")
            << entryAt("slow/locked") << QStringList{"could not be read"} << false << true;
        QTest::newRow("partial") << plainFolder(false) << QStringList{partial} << true << false;
        QTest::newRow("measured") << plainFolder(true) << QStringList{} << false << false;
    }
    void marksReadAloud() {
        QFETCH(EntryId, id);
        QFETCH(QStringList, said);
        QFETCH(bool, partial);
        QFETCH(bool, marked);
        const QModelIndex at = f->model().indexOf(id);
        QVERIFY(at.isValid());
        f->outline->scrollTo(at);
        int shownRow = 0;
        for (QModelIndex row = f->rootIndex(); row.isValid() && row != at;
             row = f->outline->indexBelow(row))
            ++shownRow;
        QAccessibleInterface* outline = QAccessible::queryAccessibleInterface(f->outline);
        QVERIFY(outline && outline->tableInterface());
        QAccessibleInterface* name = outline->tableInterface()->cellAt(shownRow, 0);
        QAccessibleInterface* size = outline->tableInterface()->cellAt(shownRow, 1);
        QVERIFY(name && size);
        QCOMPARE(name->text(QAccessible::Name), displayPath(f->index().name(id)));
        const QString description = name->text(QAccessible::Description);
        for (const QString& part : said)
            QVERIFY2(description.contains(part), qPrintable(description));
        QCOMPARE(description.isEmpty(), said.isEmpty());
        QCOMPARE(size->text(QAccessible::Name).startsWith("≥ "), partial);

        const auto iconOf = [&](EntryId entry) {
            return f->model()
                .data(f->model().indexOf(entry), Qt::DecorationRole)
                .value<QIcon>()
                .pixmap(32)
                .toImage();
        };
        QCOMPARE(iconOf(id) != iconOf(plainFolder(false)), marked);
    }
};

QTEST_MAIN(TestStopOnSlowMount)
#include "tst_stoponslowmount.moc"
