// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/Node.h"
#include "platform/FileId.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class QThreadPool;

// One entry of a listed folder.
struct WalkEntry {
    // One path component, the file system's own bytes.
    QByteArray name;
    // The entry itself is a folder; a symbolic link never is.
    bool isDir = false;
    // Not a folder: its own allocated size. A folder: -1, its total follows through
    // WalkReceiver::childMeasured.
    qint64 bytes = -1;
    // What the entry itself is, for its icon.
    ItemKind kind = ItemKind::File;
    // The inode number the folder's listing gives it: an action checks against it that
    // the item is still the one listed.
    quint64 ino = 0;
};

// Receives one folder walk's results. Called on engine threads, never two calls at
// once for one walk; implementations are quick and never wait for the main thread
// (they queue results for it): cancel() waits for a call under way.
class WalkReceiver {
public:
    virtual ~WalkReceiver() = default;
    // The walked folder's own identity, before anything else; not sent when it cannot
    // be looked at.
    virtual void folderIdentified(FileId) {}
    // The next entries, in the order the file system gives them, hidden ones included:
    // the i-th entry ever delivered by this walk has index i. A few
    // hundred at a time, so that a very large folder arrives progressively.
    virtual void entriesListed(std::vector<WalkEntry>&& batch) = 0;
    // Every entry is delivered; count is how many (0 when the folder can't be read).
    virtual void listingEnded(size_t count) = 0;
    // Child folder `index` is walked: its total, as `du -sk CHILD` gives it, in bytes.
    // Sent as soon as that child's subtree is done.
    virtual void childMeasured(size_t index, qint64 bytes) = 0;
    // The last call: the folder's own total, as `du -sk -H FOLDER` gives it, in bytes.
    virtual void walkEnded(qint64 folderBytes) = 0;
};

// A running walk or measurement. Once cancel() has returned, no receiver call begins
// (cancel waits for one that is under way) and the walk's queued work is dropped.
// Letting go of the ticket does not stop the walk.
class WalkTicket {
public:
    explicit WalkTicket(std::shared_ptr<WalkReceiver> receiver);
    virtual ~WalkTicket() = default;
    WalkTicket(const WalkTicket&) = delete;
    WalkTicket& operator=(const WalkTicket&) = delete;

    void cancel();
    bool isCancelled() const { return cancelled.load(std::memory_order_acquire); }

protected:
    // Calls call(receiver) unless the walk is cancelled.
    template <typename Call> void deliver(Call&& call) {
        std::lock_guard lock(callLock);
        if (receiver)
            call(*receiver);
    }
    // The walk's last call: the receiver is let go afterwards.
    void deliverLast(const std::function<void(WalkReceiver&)>& call);
    // Drops what is queued for this walk; called once cancelled.
    virtual void dropQueuedWork() = 0;

private:
    // Recursive: a receiver may cancel its own walk from inside a call.
    std::recursive_mutex callLock;
    std::shared_ptr<WalkReceiver> receiver;
    std::atomic<bool> cancelled{false};
};

// Measures on the threads of a given QThreadPool, without ever blocking one of them
// to wait for other work. When several walks are active the newest goes first: it is
// the folder the person just opened. Nothing is remembered from one walk to the next.
class MeasureEngine {
public:
    // Stops every walk; once it returns no engine thread touches what it owned, but for
    // one caught in a file system past the quit deadline.
    virtual ~MeasureEngine() = default;
    void setQuitDeadline(QDeadlineTimer deadline) { quitDeadline = deadline; }
    // Lists the folder (a link to a folder is followed) and measures every child
    // folder and the folder as a whole.
    virtual std::shared_ptr<WalkTicket> walkFolder(const QByteArray& folder,
                                                   std::shared_ptr<WalkReceiver> receiver) = 0;
    // One item's size: a folder as `du -sk -H PATH` gives it, anything else its own
    // allocated size. done runs on an engine thread.
    virtual std::shared_ptr<WalkTicket> measureItem(const QByteArray& path, bool isDir,
                                                    std::function<void(qint64)> done) = 0;

protected:
    // Until when the destructor waits for a walk caught in a file system: two seconds
    // from then unless set.
    QDeadlineTimer quitBy() const { return quitDeadline.value_or(QDeadlineTimer(2000)); }

private:
    std::optional<QDeadlineTimer> quitDeadline;
};

// A receiver that only wants the total: walkEnded hands it to done.
std::shared_ptr<WalkReceiver> totalOnlyReceiver(std::function<void(qint64)> done);

// SIZELOOM_MEASURE=du picks the engine that runs du; anything else, or nothing, the
// in-process one.
std::unique_ptr<MeasureEngine> makeMeasureEngine(QThreadPool* pool);
