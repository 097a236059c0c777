// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/DuEngine.h"

#include "core/RevocableJobs.h"
#include "core/SizeMeasure.h"
#include "platform/FolderListing.h"
#include "platform/StopFlag.h"

#include <dirent.h>
#include <sys/stat.h>

namespace {

constexpr size_t listingBatch = 256;

class DuWalk : public WalkTicket, public std::enable_shared_from_this<DuWalk> {
public:
    DuWalk(QThreadPool* pool, QByteArray path, std::shared_ptr<WalkReceiver> receiver)
        : WalkTicket(std::move(receiver)), jobs(std::make_shared<RevocableJobs>(pool)),
          path(std::move(path)) {}

    // Jobs of a walk with a higher priority start first.
    void startListing(int newPriority) {
        priority = newPriority;
        outstanding = 2;
        // The folder's own du takes longest: it starts first.
        post([this] { measureTotal(true); });
        post([this] { list(); });
    }
    void startItem(int newPriority, bool isDir) {
        priority = newPriority;
        outstanding = 1;
        post([this, isDir] { measureTotal(isDir); });
    }

protected:
    // Queued du runs never start; running ones are ended.
    void dropQueuedWork() override {
        jobs->revokeWaiting();
        wanted->stop();
    }

private:
    // The job keeps the walk alive and does nothing once the walk is cancelled.
    void post(std::function<void()> job) {
        if (isCancelled())
            return;
        jobs->post(
            [self = shared_from_this(), job = std::move(job)] {
                if (!self->isCancelled())
                    job();
            },
            priority);
    }

    void measureTotal(bool isDir) {
        total = isDir ? folderDiskUsage(path, wanted.get()) : fileAllocatedSize(path);
        oneDone();
    }

    void list() {
        size_t listed = 0;
        std::vector<WalkEntry> entries;
        std::vector<std::pair<size_t, QByteArray>> folders;
        const auto handOver = [&] {
            listed += entries.size();
            if (!entries.empty())
                deliver(
                    [&](WalkReceiver& receiver) { receiver.entriesListed(std::move(entries)); });
            entries.clear();
            for (auto& [index, folder] : folders)
                measureChild(index, std::move(folder));
            folders.clear();
        };
        if (struct stat folder{}; stat(path.constData(), &folder) == 0)
            deliver([&folder](WalkReceiver& receiver) {
                receiver.folderIdentified({folder.st_dev, folder.st_ino});
            });
        if (DIR* dir = opendir(path.constData())) {
            while (const dirent* entry = isCancelled() ? nullptr : readdir(dir)) {
                const QByteArray name(entry->d_name);
                if (name == "." || name == "..")
                    continue;
                const QByteArray child = childPath(path, name);
                // The kind the folder gives, so that listing never waits on a mount below.
                const ItemKind kind = kindOfEntry(child, entry->d_type);
                const bool isDir = kind == ItemKind::Folder;
                if (isDir)
                    folders.emplace_back(listed + entries.size(), child);
                entries.push_back(
                    {name, isDir, isDir ? -1 : fileAllocatedSize(child), kind, entry->d_ino});
                if (entries.size() >= listingBatch)
                    handOver();
            }
            closedir(dir);
        }
        handOver();
        deliver([listed](WalkReceiver& receiver) { receiver.listingEnded(listed); });
        oneDone();
    }

    void measureChild(size_t index, QByteArray folder) {
        ++outstanding;
        post([this, index, folder = std::move(folder)] {
            const qint64 bytes = folderDiskUsage(folder, wanted.get());
            deliver([&](WalkReceiver& receiver) { receiver.childMeasured(index, bytes); });
            oneDone();
        });
    }

    void oneDone() {
        if (--outstanding == 0)
            deliverLast(
                [bytes = total.load()](WalkReceiver& receiver) { receiver.walkEnded(bytes); });
    }

    const std::shared_ptr<RevocableJobs> jobs;
    const StopFlagPtr wanted = StopFlag::make();
    int priority = 0;
    const QByteArray path;
    std::atomic<int> outstanding{0};
    std::atomic<qint64> total{0};
};

} // namespace

DuEngine::~DuEngine() {
    std::vector<std::weak_ptr<WalkTicket>> active;
    {
        std::lock_guard guard(lock);
        active.swap(walks);
    }
    for (const std::weak_ptr<WalkTicket>& walk : active)
        if (const std::shared_ptr<WalkTicket> running = walk.lock())
            running->cancel();
}

int DuEngine::enroll(const std::shared_ptr<WalkTicket>& walk) {
    std::lock_guard guard(lock);
    std::erase_if(walks, [](const auto& known) { return known.expired(); });
    walks.push_back(walk);
    return ++newest;
}

std::shared_ptr<WalkTicket> DuEngine::walkFolder(const QByteArray& folder,
                                                 std::shared_ptr<WalkReceiver> receiver) {
    auto walk = std::make_shared<DuWalk>(pool, folder, std::move(receiver));
    walk->startListing(enroll(walk));
    return walk;
}

std::shared_ptr<WalkTicket> DuEngine::measureItem(const QByteArray& path, bool isDir,
                                                  std::function<void(qint64)> done) {
    auto walk = std::make_shared<DuWalk>(pool, path, totalOnlyReceiver(std::move(done)));
    walk->startItem(enroll(walk), isDir);
    return walk;
}
