// How the engines run walks: the order of their calls, stopping a walk, stopping the
// engine, and the newest walk going first.
#include "TempTree.h"
#include "WalkRecorder.h"
#include "core/DuEngine.h"
#include "core/InProcessEngine.h"

#include <QThreadPool>

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

// An engine of the kind on its own pool, six threads like the controller's.
struct Engine {
    explicit Engine(const QByteArray& kind, int workers = InProcessEngine::defaultWorkers(),
                    int threads = 6) {
        pool.setMaxThreadCount(threads);
        if (kind == "du")
            engine = std::make_unique<DuEngine>(&pool);
        else
            engine = std::make_unique<InProcessEngine>(&pool, workers);
    }
    MeasureEngine* operator->() const { return engine.get(); }
    bool drains() { return pool.waitForDone(120000); }

    QThreadPool pool;
    std::unique_ptr<MeasureEngine> engine;
};

// The ticket of a walk, for a receiver that stops its own walk: the engine may call it
// before walkFolder has even returned the ticket.
class TicketSlot {
public:
    void set(std::shared_ptr<WalkTicket> given) {
        std::lock_guard guard(lock);
        ticket = std::move(given);
        filled.notify_all();
    }
    std::shared_ptr<WalkTicket> get() {
        std::unique_lock guard(lock);
        filled.wait(guard, [this] { return ticket != nullptr; });
        return ticket;
    }

private:
    std::mutex lock;
    std::condition_variable filled;
    std::shared_ptr<WalkTicket> ticket;
};

void addEngineColumn() {
    QTest::addColumn<QByteArray>("engine");
    QTest::newRow("in-process") << QByteArray("in-process");
    QTest::newRow("du") << QByteArray("du");
}

} // namespace

class TestWalkControl : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray wide, large;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(tmp.isValid());
        wide = makeTree(tmp, 30, 3, 3);
        large = makeTree(tmp, 150, 10, 10);
    }

    void callsComeInOrder_data() { addEngineColumn(); }
    void callsComeInOrder() {
        QFETCH(QByteArray, engine);
        Engine measuring(engine);
        const auto walk = walkToTheEnd(*measuring.engine, wide);
        QVERIFY(walk);
        QCOMPARE(walk->problems(), QStringList());
        QCOMPARE(walk->entries.size(), size_t(60));
        QCOMPARE(walk->childSizes.size(), size_t(30));
        const QStringList calls = walk->calls();
        QCOMPARE(calls.first(), "entriesListed");
        QCOMPARE(calls.last(), "walkEnded");
        QCOMPARE(calls.count("walkEnded"), 1);
        QCOMPARE(calls.count("listingEnded"), 1);
    }

    // A very large folder arrives in many small batches, not in one at the end.
    void largeListingArrivesInBatches_data() { addEngineColumn(); }
    void largeListingArrivesInBatches() {
        QFETCH(QByteArray, engine);
        const QByteArray flat = tmp.freshFolder();
        for (int i = 0; i < 3000; ++i)
            writeFile(join(flat, "f" + QByteArray::number(i)), 0);
        Engine measuring(engine);
        const auto walk = walkToTheEnd(*measuring.engine, flat);
        QVERIFY(walk);
        QCOMPARE(walk->problems(), QStringList());
        QCOMPARE(walk->entries.size(), size_t(3000));
        QVERIFY(walk->calls().count("entriesListed") >= 10);
    }

    // A receiver stops its own walk from inside a call: nothing more reaches it, the
    // walk does not finish, and no work is left on the pool.
    void cancelInsideACall_data() { addEngineColumn(); }
    void cancelInsideACall() {
        QFETCH(QByteArray, engine);
        Engine measuring(engine);
        auto walk = std::make_shared<WalkRecorder>();
        TicketSlot slot;
        std::atomic<bool> cancelled{false};
        walk->onFirstChild = [&] {
            slot.get()->cancel();
            walk->close();
            cancelled = true;
        };
        slot.set(measuring->walkFolder(large, walk));
        QTRY_VERIFY_WITH_TIMEOUT(cancelled, 120000);
        QVERIFY(measuring.drains());
        QCOMPARE(walk->problems(), QStringList());
        QCOMPARE(walk->childCount(), size_t(1));
        QVERIFY(!walk->isEnded());
    }

    // Stopped from the main thread while results stream in.
    void cancelFromTheMainThread_data() { addEngineColumn(); }
    void cancelFromTheMainThread() {
        QFETCH(QByteArray, engine);
        Engine measuring(engine);
        auto walk = std::make_shared<WalkRecorder>();
        const auto ticket = measuring->walkFolder(large, walk);
        QTRY_VERIFY_WITH_TIMEOUT(walk->childCount() > 0, 120000);
        ticket->cancel();
        walk->close();
        QVERIFY(ticket->isCancelled());
        QVERIFY(measuring.drains());
        QCOMPARE(walk->problems(), QStringList());
    }

    // Destroying the engine stops every walk it runs, at once.
    void destroyingTheEngineStopsEveryWalk_data() { addEngineColumn(); }
    void destroyingTheEngineStopsEveryWalk() {
        QFETCH(QByteArray, engine);
        Engine measuring(engine);
        auto first = std::make_shared<WalkRecorder>();
        auto second = std::make_shared<WalkRecorder>();
        measuring->walkFolder(large, first);
        measuring->walkFolder(large, second);
        QTRY_VERIFY_WITH_TIMEOUT(second->childCount() > 0, 120000);
        measuring.engine.reset();
        first->close();
        second->close();
        QVERIFY(measuring.drains());
        QCOMPARE(first->problems(), QStringList());
        QCOMPARE(second->problems(), QStringList());
    }

    // While an older walk still has folders to read, a new walk is read first: it is the
    // folder the person just opened. One worker makes the order certain.
    void newestWalkGoesFirst_data() { addEngineColumn(); }
    void newestWalkGoesFirst() {
        QFETCH(QByteArray, engine);
        const QByteArray older = makeTree(tmp, 5, 2, 2);
        const QByteArray newer = makeTree(tmp, 3, 2, 2);
        Engine measuring(engine, 1, engine == "du" ? 1 : 6);
        auto log = std::make_shared<SharedCallLog>();
        auto first = std::make_shared<WalkRecorder>(log, "older");
        auto second = std::make_shared<WalkRecorder>(log, "newer");
        first->holdFirstChildCall();
        measuring->walkFolder(older, first);
        QTRY_VERIFY_WITH_TIMEOUT(first->isHeld(), 120000);
        measuring->walkFolder(newer, second);
        first->release();
        QTRY_VERIFY_WITH_TIMEOUT(first->isEnded() && second->isEnded(), 120000);
        QCOMPARE(first->problems(), QStringList());
        QCOMPARE(second->problems(), QStringList());

        QStringList calls;
        {
            std::lock_guard guard(log->lock);
            calls = log->calls;
        }
        const qsizetype held = calls.indexOf("older childMeasured");
        const qsizetype newerEnded = calls.indexOf("newer walkEnded");
        QVERIFY(held >= 0 && newerEnded > held);
        for (qsizetype i = held + 1; i < newerEnded; ++i)
            QVERIFY2(calls[i].startsWith("newer"), qPrintable(calls.join(", ")));
        QVERIFY(calls.mid(newerEnded).contains("older childMeasured"));
    }
};

QTEST_GUILESS_MAIN(TestWalkControl)
#include "tst_walkcontrol.moc"
