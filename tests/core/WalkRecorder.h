// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// For walk tests: an engine on a pool of its own, and a listener that records every call
// under its own lock and notes every broken promise of a walk (a folder measured twice or
// after the end, anything after the walk was stopped).
#include "core/WalkEngine.h"

#include <QStringList>
#include <QTest>
#include <QThreadPool>
#include <functional>
#include <mutex>
#include <set>

// An engine on its own pool, six threads like the tree's.
struct Walker {
    explicit Walker(int workers = WalkEngine::defaultWorkers(), int threads = 6) {
        pool.setMaxThreadCount(threads);
        engine = std::make_unique<WalkEngine>(&pool, workers);
    }
    ~Walker() {
        engine.reset();
        pool.waitForDone();
    }
    WalkEngine* operator->() const { return engine.get(); }
    bool drains() { return pool.waitForDone(120000); }

    QThreadPool pool;
    std::unique_ptr<WalkEngine> engine;
};

// Calls of several walks in the one order they happened, each as "LABEL call".
struct SharedCallLog {
    std::mutex lock;
    QStringList calls;
};

class WalkRecorder : public WalkListener {
public:
    explicit WalkRecorder(std::shared_ptr<SharedCallLog> shared = {}, QString label = {})
        : shared(std::move(shared)), label(std::move(label)) {}

    void listed(EntryId) override {
        std::lock_guard guard(lock);
        noteCall("listed");
        ++runs;
    }
    void measured(EntryId folder) override {
        std::unique_lock guard(lock);
        noteCall("measured");
        fault(!measuredFolders.insert(folder).second,
              QString("folder %1 measured twice").arg(folder));
        if (onFirstMeasured && measuredFolders.size() == 1) {
            const auto call = std::move(onFirstMeasured);
            guard.unlock();
            call();
        }
    }
    void ended() override {
        std::lock_guard guard(lock);
        noteCall("ended");
        over = true;
    }

    // From now on any call is a fault: the walk was stopped.
    void close() {
        std::lock_guard guard(lock);
        closed = true;
    }
    // Runs once, on the walk's thread, inside the first `measured` once it is recorded.
    std::function<void()> onFirstMeasured;

    bool isEnded() { return locked(over); }
    size_t measuredCount() { return locked(measuredFolders).size(); }
    QStringList problems() { return locked(faults); }

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
        fault(closed, QString(name) + " after the walk was stopped");
        fault(over, QString(name) + " after the end");
    }
    void fault(bool broken, const QString& what) {
        if (broken)
            faults << what;
    }

    const std::shared_ptr<SharedCallLog> shared;
    const QString label;
    std::mutex lock;
    QStringList faults;
    std::set<EntryId> measuredFolders;
    int runs = 0;
    bool over = false, closed = false;
};

// The folder walked into a new index, to the end; null when the end never comes.
inline std::shared_ptr<SizeIndex> walkIntoIndex(Walker& walker, const QByteArray& folder,
                                                WalkOptions options = {},
                                                QStringList* problems = nullptr) {
    auto index = std::make_shared<SizeIndex>(folder);
    auto recorder = std::make_shared<WalkRecorder>();
    walker->walk(index, index->root(), folder, options, recorder);
    if (!QTest::qWaitFor([&] { return recorder->isEnded(); }, 300000))
        return nullptr;
    if (problems)
        *problems = recorder->problems();
    return index;
}
