// SPDX-License-Identifier: GPL-2.0-or-later
// Whole results or none: a Duplicate or Compress ended at a random moment (SIGTERM, the
// orderly way; SIGKILL, no way at all) leaves either nothing under the final name or the
// complete result, and what a killed program left is cleared by the next action there.
#include "TempTree.h"

#include <QElapsedTimer>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <csignal>

using namespace temptree;

namespace {

// The folder copied or archived: files of random bytes (which do not shrink), two of
// them hard links of each other, a link and an empty folder. SIZELOOM_WHOLE_MIB sets
// its size (4096 for the 4 GiB run).
QByteArray makeData(const QByteArray& folder) {
    const QByteArray data = join(folder, "data");
    makeDir(data);
    makeDir(join(data, "sub"));
    makeDir(join(data, "empty"));
    const qint64 mib = qEnvironmentVariableIntValue("SIZELOOM_WHOLE_MIB") > 0
                           ? qEnvironmentVariableIntValue("SIZELOOM_WHOLE_MIB")
                           : 64;
    QByteArray chunk(1 << 20, Qt::Uninitialized);
    for (qint64 file = 0; file < 16; ++file) {
        const QByteArray path =
            join(data, (file % 2 ? "sub/part" : "part") + QByteArray::number(file));
        const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_EXCL, 0640);
        for (qint64 written = 0; written < mib / 16; ++written) {
            QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(chunk.data()),
                                                  chunk.size() / 4);
            if (write(fd, chunk.constData(), size_t(chunk.size())) != chunk.size())
                break;
        }
        close(fd);
    }
    link(join(data, "part0").constData(), join(data, "sub/twin").constData());
    symlink("part0", join(data, "link").constData());
    return data;
}

QByteArrayList entriesOf(const QByteArray& folder) {
    QByteArray listing = runForOutput("/bin/ls", {"-A", folder}).value_or("");
    QByteArrayList entries = listing.split('\n');
    entries.removeAll(QByteArray());
    return entries;
}

struct Run {
    QProcess process;
    QElapsedTimer sinceSignal;
};

void start(Run& run, const char* action, const QByteArray& folder) {
    run.process.start(QStringLiteral(ACTION_RUNNER),
                      {QString::fromLatin1(action), QFile::decodeName(folder), "data"});
    QVERIFY(run.process.waitForStarted());
    while (!run.process.canReadLine())
        QVERIFY(run.process.waitForReadyRead(10000));
    QCOMPARE(run.process.readLine(), QByteArray("started\n"));
}

} // namespace

class TestWholeResults : public QObject {
    Q_OBJECT
    Dir tmp;

    // The folder holds the data and, at most, the complete result under its final name,
    // or (after SIGKILL only) a partial result under a hidden name.
    void checkFolder(const QByteArray& folder, bool killed) {
        for (const QByteArray& entry : entriesOf(folder)) {
            if (entry == "data")
                continue;
            if (entry == "data copy") {
                QCOMPARE(runForOutput("/usr/bin/diff", {"-r", "--no-dereference",
                                                        join(folder, "data"), join(folder, entry)}),
                         std::optional<QByteArray>(""));
                struct stat a {
                }, b{};
                QCOMPARE(lstat(join(folder, "data copy/part0").constData(), &a), 0);
                QCOMPARE(lstat(join(folder, "data copy/sub/twin").constData(), &b), 0);
                QCOMPARE(a.st_ino, b.st_ino);
            } else if (entry == "data.zip") {
                QProcess test;
                test.start("unzip", {"-tqq", QFile::decodeName(join(folder, entry))});
                QVERIFY(test.waitForFinished(120000));
                QCOMPARE(test.exitCode(), 0);
            } else {
                QVERIFY2(killed && entry.startsWith(".data") &&
                             entry.contains(".sizeloom-partial-"),
                         entry.constData());
            }
        }
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(tmp.isValid()); }

    void endedAtAnyMoment_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::newRow("duplicate") << QByteArray("duplicate");
        QTest::newRow("compress") << QByteArray("compress");
    }
    void endedAtAnyMoment() {
        QFETCH(QByteArray, action);
        const QByteArray folder = tmp.freshFolder();
        makeData(folder);
        // How long the whole action takes here, to spread the moments over.
        QElapsedTimer whole;
        {
            Run run;
            start(run, action, folder);
            whole.start();
            QVERIFY(run.process.waitForFinished(600000));
            QCOMPARE(run.process.readAllStandardOutput().trimmed(), QByteArray("0"));
        }
        const qint64 took = std::max<qint64>(whole.elapsed(), 5);
        checkFolder(folder, false);
        QMap<QByteArray, int> seen;
        const int rounds = qEnvironmentVariableIsSet("SIZELOOM_WHOLE_ROUNDS")
                               ? qEnvironmentVariableIntValue("SIZELOOM_WHOLE_ROUNDS")
                               : 10;
        for (int round = 0; round < rounds; ++round) {
            for (const QByteArray& entry : entriesOf(folder))
                if (entry != "data")
                    runForOutput("/bin/rm", {"-rf", "--", join(folder, entry)});
            const bool kill = round % 3 == 2;
            Run run;
            start(run, action, folder);
            QTest::qWait(int(QRandomGenerator::global()->bounded(took + took / 5)));
            // Already ended on its own: nothing left to signal (and a pid of 0 would
            // signal this whole process group).
            if (const qint64 pid = run.process.processId(); pid > 0)
                ::kill(pid_t(pid), kill ? SIGKILL : SIGTERM);
            run.sinceSignal.start();
            QVERIFY(run.process.state() == QProcess::NotRunning ||
                    run.process.waitForFinished(10000));
            // The orderly way takes at most the two seconds given to running jobs.
            if (!kill)
                QVERIFY2(run.sinceSignal.elapsed() < 3000,
                         qPrintable(QString::number(run.sinceSignal.elapsed())));
            checkFolder(folder, kill);
            const QByteArrayList left = entriesOf(folder);
            ++seen[left.size() == 1                                          ? "nothing"
                   : left.contains("data copy") || left.contains("data.zip") ? "whole"
                                                                             : "partial"];
        }
        // How the moments fell, to tell that they fell inside the action too.
        qInfo() << action << "took" << took << "ms; ended with" << seen;
        // The next action in the folder clears what a killed one left, and completes.
        for (const char* result : {"data copy", "data.zip"})
            runForOutput("/bin/rm", {"-rf", "--", join(folder, result)});
        Run last;
        start(last, action, folder);
        QVERIFY(last.process.waitForFinished(600000));
        checkFolder(folder, false);
        QVERIFY(entriesOf(folder).size() == 2);
    }
};

QTEST_MAIN(TestWholeResults)
#include "tst_wholeresults.moc"
