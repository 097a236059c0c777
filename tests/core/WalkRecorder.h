// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// For engine tests: an engine to test, and a receiver that records every call under its
// own lock and notes every broken promise of the engine (order of calls, calls after the
// walk was stopped).
#include "core/DuEngine.h"
#include "core/InProcessEngine.h"

#include <QStringList>
#include <QTest>
#include <QThreadPool>
#include <map>

// An engine of the kind ("du", else in-process) on its own pool, six threads like the
// controller's.
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
    MeasureEngine& operator*() const { return *engine; }
    bool drains() { return pool.waitForDone(120000); }

    QThreadPool pool;
    std::unique_ptr<MeasureEngine> engine;
};

// Calls of several walks in the one order they happened, each as "LABEL call".
struct SharedCallLog {
    std::mutex lock;
    QStringList calls;
};

class WalkRecorder : public WalkReceiver {
public:
    explicit WalkRecorder(std::shared_ptr<SharedCallLog> shared = {}, QString label = {})
        : shared(std::move(shared)), label(std::move(label)) {}

    void entriesListed(std::vector<WalkEntry>&& batch) override {
        std::lock_guard guard(lock);
        noteCall("entriesListed");
        fault(listingDone, "entries after listingEnded");
        fault(batch.empty() || batch.size() > 1000, QString("batch of %1").arg(batch.size()));
        for (WalkEntry& entry : batch)
            entries.push_back(std::move(entry));
    }
    void listingEnded(size_t count) override {
        std::lock_guard guard(lock);
        noteCall("listingEnded");
        fault(listingDone, "listingEnded twice");
        fault(count != entries.size(),
              QString("listingEnded(%1) after %2 entries").arg(count).arg(entries.size()));
        listingDone = true;
    }
    void childMeasured(size_t index, qint64 bytes) override {
        std::unique_lock guard(lock);
        noteCall("childMeasured");
        fault(index >= entries.size() || !entries[index].isDir,
              QString("childMeasured(%1) for no listed folder").arg(index));
        fault(childSizes.count(index), QString("child %1 measured twice").arg(index));
        childSizes[index] = bytes;
        if (onFirstChild && childSizes.size() == 1) {
            const auto call = std::move(onFirstChild);
            guard.unlock();
            call();
        }
    }
    void walkEnded(qint64 folderBytes) override {
        std::lock_guard guard(lock);
        noteCall("walkEnded");
        fault(!listingDone, "walkEnded before listingEnded");
        for (size_t i = 0; i < entries.size(); ++i)
            fault(entries[i].isDir && !childSizes.count(i),
                  "walkEnded before child " + QString::number(i) + " was measured");
        total = folderBytes;
        ended = true;
    }

    // From now on any call is a fault: the walk was cancelled.
    void close() {
        std::lock_guard guard(lock);
        closed = true;
    }
    // Runs once, on the engine thread, inside the first childMeasured once it is recorded.
    std::function<void()> onFirstChild;

    bool isEnded() { return locked(ended); }
    size_t childCount() { return locked(childSizes).size(); }
    QStringList problems() { return locked(faults); }

    // Read once the walk has ended.
    std::vector<WalkEntry> entries;
    std::map<size_t, qint64> childSizes;
    qint64 total = -1;

private:
    template <typename T> T locked(const T& value) {
        std::lock_guard guard(lock);
        return value;
    }
    void noteCall(const char* name) {
        if (shared) {
            std::lock_guard guard(shared->lock);
            shared->calls << label + " " + name;
        }
        fault(closed, QString(name) + " after the walk was cancelled");
        fault(ended, QString(name) + " after walkEnded");
    }
    void fault(bool broken, const QString& what) {
        if (broken)
            faults << what;
    }

    const std::shared_ptr<SharedCallLog> shared;
    const QString label;
    std::mutex lock;
    QStringList faults;
    bool listingDone = false, ended = false, closed = false;
};

// Walks the folder and waits for the walk's end; null when it never comes.
inline std::shared_ptr<WalkRecorder> walkToTheEnd(MeasureEngine& engine, const QByteArray& folder) {
    auto recorder = std::make_shared<WalkRecorder>();
    engine.walkFolder(folder, recorder);
    if (!QTest::qWaitFor([&] { return recorder->isEnded(); }, 300000))
        return nullptr;
    return recorder;
}
