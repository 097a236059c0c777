// SPDX-License-Identifier: GPL-2.0-or-later
// How the engine runs walks: stopping a walk, stopping the engine, and the newest walk
// going first. What a walk promises its listener is checked by WalkRecorder in every walk.
#include "TempTree.h"
#include "WalkRecorder.h"

#include <future>

using namespace temptree;

namespace {

// `children` folders, each with `subfolders` folders of `files` files, and one file
// beside each child.
QByteArray makeTree(Dir& tmp, int children, int subfolders, int files) {
    const QByteArray folder = tmp.freshFolder();
    for (int c = 0; c < children; ++c) {
        const QByteArray child = join(folder, "child" + QByteArray::number(c));
        makeDir(child);
        writeFile(join(folder, "file" + QByteArray::number(c)), 0);
        for (int s = 0; s < subfolders; ++s) {
            const QByteArray sub = join(child, "sub" + QByteArray::number(s));
            makeDir(sub);
            for (int f = 0; f < files; ++f)
                writeFile(join(sub, "f" + QByteArray::number(f)), 0);
        }
    }
    return folder;
}

} // namespace

class TestWalkControl : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray large;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        large = makeTree(tmp, 150, 10, 10);
    }

    // A walk stopped while its results stream in: by its listener from inside one of its
    // calls, from the main thread, or by destroying the engine, which stops every walk
    // it runs. Nothing more reaches a listener, and no work is left on the pool.
    void stoppedWhileResultsStreamIn_data() {
        QTest::addColumn<QByteArray>("how");
        for (const char* how : {"inside a call", "from the main thread", "engine destroyed"})
            QTest::newRow(how) << QByteArray(how);
    }
    void stoppedWhileResultsStreamIn() {
        QFETCH(QByteArray, how);
        Walker walker;
        const auto older = std::make_shared<WalkRecorder>();
        const auto recorder = std::make_shared<WalkRecorder>();
        // The walk may call its listener before walk() has returned it.
        std::promise<std::shared_ptr<IndexWalk>> given;
        const std::shared_future<std::shared_ptr<IndexWalk>> walk = given.get_future();
        if (how == "inside a call")
            recorder->onFirstMeasured = [walk, recorder = recorder.get()] {
                walk.get()->cancel();
                recorder->close();
            };
        const auto index = std::make_shared<SizeIndex>(large);
        if (how == "engine destroyed")
            walker->walk(std::make_shared<SizeIndex>(large), 0, large, {}, older);
        given.set_value(walker->walk(index, index->root(), large, {}, recorder));
        QTRY_VERIFY_WITH_TIMEOUT(recorder->measuredCount() > 0, 120000);
        if (how == "from the main thread") {
            walk.get()->cancel();
            QVERIFY(walk.get()->isCancelled());
        } else if (how == "engine destroyed") {
            walker.engine.reset();
            older->close();
        }
        recorder->close();
        QVERIFY(walker.drains());
        QCOMPARE(recorder->problems(), QStringList());
        QCOMPARE(older->problems(), QStringList());
    }

    // While an older walk still has folders to read, a new walk is read first: it is the
    // folder the person just opened. One worker makes the order certain.
    void newestWalkGoesFirst() {
        const QByteArray older = makeTree(tmp, 5, 2, 2);
        const QByteArray newer = makeTree(tmp, 3, 2, 2);
        Walker walker(1);
        auto log = std::make_shared<SharedCallLog>();
        auto first = std::make_shared<WalkRecorder>(log, "older");
        auto second = std::make_shared<WalkRecorder>(log, "newer");
        // The older walk's first result holds up its worker until the newer walk is in.
        std::promise<void> release;
        const std::shared_future<void> released = release.get_future();
        std::atomic<bool> holding{false};
        first->onFirstMeasured = [released, &holding] {
            holding = true;
            released.wait();
        };
        walker->walk(std::make_shared<SizeIndex>(older), 0, older, {}, first);
        QTRY_VERIFY_WITH_TIMEOUT(holding, 120000);
        walker->walk(std::make_shared<SizeIndex>(newer), 0, newer, {}, second);
        release.set_value();
        QTRY_VERIFY_WITH_TIMEOUT(first->isEnded() && second->isEnded(), 120000);
        QCOMPARE(first->problems(), QStringList());
        QCOMPARE(second->problems(), QStringList());

        // Both walks have ended: nothing writes to the log any more.
        const QStringList calls = log->calls;
        const qsizetype held = calls.indexOf("older measured");
        const qsizetype newerEnded = calls.indexOf("newer ended");
        QVERIFY(held >= 0 && newerEnded > held);
        for (qsizetype i = held + 1; i < newerEnded; ++i)
            QVERIFY2(calls[i].startsWith("newer"), qPrintable(calls.join(", ")));
        QVERIFY(calls.mid(newerEnded).contains("older measured"));
    }
};

QTEST_GUILESS_MAIN(TestWalkControl)
#include "tst_walkcontrol.moc"
