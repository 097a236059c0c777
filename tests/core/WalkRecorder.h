#pragma once

// A receiver for engine tests: records every call under its own lock and notes every
// broken promise of the engine (order of calls, calls after the walk was stopped).
#include "core/MeasureEngine.h"

#include <QStringList>
#include <QTest>
#include <condition_variable>
#include <map>

// Calls of several walks in the one order they happened, each as "LABEL call".
struct SharedCallLog {
    std::mutex lock;
    QStringList calls;
};

class WalkRecorder : public WalkReceiver {
public:
    WalkRecorder() = default;
    WalkRecorder(std::shared_ptr<SharedCallLog> shared, QString label)
        : shared(std::move(shared)), label(std::move(label)) {}

    void entriesListed(std::vector<WalkEntry>&& batch) override {
        std::lock_guard guard(lock);
        noteCall("entriesListed");
        if (listingDone)
            faults << "entries after listingEnded";
        if (batch.empty() || batch.size() > 1000)
            faults << QString("batch of %1 entries").arg(batch.size());
        for (WalkEntry& entry : batch)
            entries.push_back(std::move(entry));
    }
    void listingEnded(size_t count) override {
        std::lock_guard guard(lock);
        noteCall("listingEnded");
        if (listingDone)
            faults << "listingEnded twice";
        if (count != entries.size())
            faults << QString("listingEnded(%1) after %2 entries").arg(count).arg(entries.size());
        listingDone = true;
    }
    void childMeasured(size_t index, qint64 bytes) override {
        std::unique_lock guard(lock);
        noteCall("childMeasured");
        if (index >= entries.size() || !entries[index].isDir)
            faults << QString("childMeasured(%1) for no listed folder").arg(index);
        if (childSizes.count(index))
            faults << QString("child %1 measured twice").arg(index);
        childSizes[index] = bytes;
        if (holdFirstChild && childSizes.size() == 1) {
            held = true;
            changed.notify_all();
            changed.wait(guard, [this] { return !holdFirstChild; });
        }
        if (onFirstChild && childSizes.size() == 1) {
            const auto call = std::move(onFirstChild);
            guard.unlock();
            call();
        }
    }
    void walkEnded(qint64 folderBytes) override {
        std::lock_guard guard(lock);
        noteCall("walkEnded");
        if (!listingDone)
            faults << "walkEnded before listingEnded";
        for (size_t i = 0; i < entries.size(); ++i)
            if (entries[i].isDir && !childSizes.count(i))
                faults << "walkEnded before child " + QString::number(i) + " was measured";
        total = folderBytes;
        ended = true;
        changed.notify_all();
    }

    // From now on any call is a fault: the walk was cancelled.
    void close() {
        std::lock_guard guard(lock);
        closed = true;
    }
    // The first childMeasured waits inside the call until release().
    void holdFirstChildCall() {
        std::lock_guard guard(lock);
        holdFirstChild = true;
    }
    bool isHeld() {
        std::lock_guard guard(lock);
        return held;
    }
    void release() {
        std::lock_guard guard(lock);
        holdFirstChild = false;
        changed.notify_all();
    }
    // Runs once, on the engine thread, right after the first childMeasured is recorded.
    std::function<void()> onFirstChild;

    bool isEnded() {
        std::lock_guard guard(lock);
        return ended;
    }
    size_t childCount() {
        std::lock_guard guard(lock);
        return childSizes.size();
    }
    QStringList problems() {
        std::lock_guard guard(lock);
        return faults;
    }
    // The calls in order, by name.
    QStringList calls() {
        std::lock_guard guard(lock);
        return log;
    }

    // Read once the walk has ended.
    std::vector<WalkEntry> entries;
    std::map<size_t, qint64> childSizes;
    qint64 total = -1;

private:
    void noteCall(const char* name) {
        log << name;
        if (shared) {
            std::lock_guard guard(shared->lock);
            shared->calls << label + " " + name;
        }
        if (closed)
            faults << QString(name) + " after the walk was cancelled";
        if (ended)
            faults << QString(name) + " after walkEnded";
    }

    const std::shared_ptr<SharedCallLog> shared;
    const QString label;
    std::mutex lock;
    std::condition_variable changed;
    QStringList faults, log;
    bool listingDone = false, ended = false, closed = false, held = false;
    bool holdFirstChild = false;
};

// Walks the folder and waits for the walk's end; null when it never comes.
inline std::shared_ptr<WalkRecorder> walkToTheEnd(MeasureEngine& engine, const QByteArray& folder) {
    auto recorder = std::make_shared<WalkRecorder>();
    engine.walkFolder(folder, recorder);
    if (!QTest::qWaitFor([&] { return recorder->isEnded(); }, 300000))
        return nullptr;
    return recorder;
}
