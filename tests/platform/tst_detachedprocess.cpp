// SPDX-License-Identifier: GPL-2.0-or-later
// Programs started for the user: no shell, arguments as raw bytes, nothing waited for,
// and nothing of ours left to them.
#include "TempTree.h"
#include "platform/DetachedProcess.h"

#include <QFile>
#include <csignal>

using namespace temptree;

class TestDetachedProcess : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray bin;

    QByteArray readAll(const QByteArray& path) {
        QFile file(QFile::decodeName(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        bin = join(tmp.bytes(), "bin");
        makeDir(bin);
        // Writes its arguments (each ended by NUL), then facts about itself, then stays
        // until it is told to go.
        writeBytes(join(bin, "probe"),
                   "#!/bin/sh\n"
                   "out=\"${0%/*}\"\n"
                   "for a in \"$@\"; do printf '%s\\0' \"$a\"; done > \"$out/args\"\n"
                   "read -r stat < /proc/$$/stat\n"
                   "echo \"$stat\" > \"$out/stat\"\n"
                   "f0=$(readlink /proc/$$/fd/0); f1=$(readlink /proc/$$/fd/1)\n"
                   "f2=$(readlink /proc/$$/fd/2)\n"
                   "printf '%s\\n' \"$f0\" \"$f1\" \"$f2\" > \"$out/fds\"\n"
                   "echo $$ > \"$out/pid.tmp\" && mv \"$out/pid.tmp\" \"$out/pid\"\n"
                   "exec sleep 600\n");
        QCOMPARE(chmod(join(bin, "probe").constData(), 0700), 0);
    }

    void startsAndLetsGo() {
        const QList<QByteArray> args{"--", "/a path/with space", "caf\xe9",
                                     "",   "$HOME; rm -rf x",    "line\nbreak"};
        QVERIFY(startDetached(join(bin, "probe"), args));
        QByteArray pid;
        QTRY_VERIFY(!(pid = readAll(join(bin, "pid")).trimmed()).isEmpty());
        // Returned while the program still runs.
        QCOMPARE(kill(pid.toInt(), 0), 0);

        QList<QByteArray> seen = readAll(join(bin, "args")).split('\0');
        seen.removeLast();
        QCOMPARE(seen, args);
        // /proc/PID/stat: pid (comm) state ppid pgrp session ...
        const QList<QByteArray> stat = readAll(join(bin, "stat")).split(')').last().split(' ');
        QVERIFY(stat.size() > 4);
        QVERIFY(stat[2].toInt() != getpid());  // not our child
        QVERIFY(stat[4].toInt() != getsid(0)); // a session of its own
        QCOMPARE(readAll(join(bin, "fds")), QByteArray("/dev/null\n/dev/null\n/dev/null\n"));
        QCOMPARE(kill(pid.toInt(), SIGTERM), 0);
    }

    void programLookedUpInPath() {
        qputenv("PATH", "/nonexistent:" + bin);
        QCOMPARE(findProgram("probe"), join(bin, "probe"));
        QVERIFY(findProgram("no-such-program-here").isEmpty());
        QVERIFY(!startDetached("no-such-program-here", {}));
        QVERIFY(!startDetached(join(bin, "missing"), {}));
    }
};

QTEST_GUILESS_MAIN(TestDetachedProcess)
#include "tst_detachedprocess.moc"
