// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/FolderWalk.h"

#include "core/SizeMeasure.h"
#include "core/WalkScheduler.h"
#include "platform/DirectoryReader.h"
#include "platform/FolderListing.h"
#include "platform/PseudoFileSystem.h"

#include <array>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Entries handed to the receiver at once: small enough that a huge folder shows
// progress, large enough that the hand-off costs little.
constexpr size_t listingBatch = 256;

constexpr int belowFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// For a path longer than the kernel takes in one call: opened a stretch at a time.
int openInStretches(const WalkDir& dir) {
    std::vector<const QByteArray*> parts;
    for (const WalkDir* d = &dir; d; d = d->parent.get())
        parts.push_back(&d->name);
    int base = AT_FDCWD;
    QByteArray stretch;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
        if (!stretch.isEmpty() && stretch.size() + (*part)->size() + 2 >= PATH_MAX) {
            const int next = openat(base, stretch.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
            if (base != AT_FDCWD)
                close(base);
            if (next < 0)
                return -1;
            base = next;
            stretch.clear();
        }
        if (!stretch.isEmpty())
            stretch += '/';
        stretch += **part;
    }
    const int fd = openat(base, stretch.constData(), belowFlags);
    if (base != AT_FDCWD)
        close(base);
    return fd;
}

// The folder below the walked one, its last component not followed. The path is put
// together in place from the chain of names, without allocating.
int openBelow(const WalkDir& dir) {
    // A name takes at least two bytes with its slash: a path that fits has at most
    // PATH_MAX / 2 of them.
    std::array<const QByteArray*, PATH_MAX / 2> names;
    size_t count = 0;
    size_t length = 0; // every name with its slash, the last with the terminating zero
    for (const WalkDir* d = &dir; d; d = d->parent.get()) {
        length += size_t(d->name.size()) + 1;
        if (length > PATH_MAX || count == names.size())
            return openInStretches(dir);
        names[count++] = &d->name;
    }
    std::array<char, PATH_MAX> path;
    size_t at = 0;
    while (count > 0) {
        const QByteArray& name = *names[--count];
        std::copy(name.begin(), name.end(), path.begin() + at);
        at += size_t(name.size());
        path[at++] = count > 0 ? '/' : '\0';
    }
    return open(path.data(), belowFlags);
}

enum class Loop {
    None,
    // The walked folder met again below itself.
    OfWalkedFolder,
    // Any other folder met again below itself.
    Inner
};

Loop loopOf(const WalkDir& dir, const struct stat& st) {
    for (const WalkDir* up = &dir; up; up = up->parent.get())
        if (up->dev == st.st_dev && up->ino == st.st_ino)
            return up->isWalkedFolder() ? Loop::OfWalkedFolder : Loop::Inner;
    return Loop::None;
}

// Another file system starts here: one whose entries hold no blocks is not entered.
bool isEntered(int dirFd, const char* name, const struct stat& st, dev_t dirDev) {
    return st.st_dev == dirDev || !isBlocklessFileSystem(dirFd, name);
}

} // namespace

qint64 duTotalBytes(qint64 blocks) {
    return (blocks + 1) / 2 * 1024;
}

WalkDir::WalkDir(std::shared_ptr<WalkDir> parent, QByteArray name, const struct stat& st,
                 std::shared_ptr<ChildTally> child, bool countsForFolder)
    : parent(std::move(parent)), name(std::move(name)), dev(st.st_dev), ino(st.st_ino),
      child(std::move(child)), countsForFolder(countsForFolder) {}

WalkDir::WalkDir(std::shared_ptr<WalkDir> parent, QByteArray name,
                 std::shared_ptr<ChildTally> child)
    : parent(std::move(parent)), name(std::move(name)), child(std::move(child)), unlooked(true) {}

WalkDir::WalkDir(QByteArray path) : name(std::move(path)) {}

WalkDir::~WalkDir() {
    // A deep chain whose last reference goes here is let go one folder at a time, not
    // by destructors nested as deep as the tree: a parent freed while its child is being
    // freed only joins the list that the outermost destructor works through.
    thread_local std::vector<std::shared_ptr<WalkDir>>* releasing = nullptr;
    if (releasing) {
        releasing->push_back(std::move(parent));
        return;
    }
    std::vector<std::shared_ptr<WalkDir>> pending{std::move(parent)};
    releasing = &pending;
    while (!pending.empty()) {
        std::shared_ptr<WalkDir> next = std::move(pending.back());
        pending.pop_back();
        next.reset();
    }
    releasing = nullptr;
}

FolderWalk::FolderWalk(QByteArray path, Kind kind, std::shared_ptr<WalkReceiver> receiver,
                       std::weak_ptr<WalkScheduler> scheduler)
    : WalkTicket(std::move(receiver)), path(std::move(path)), kind(kind),
      scheduler(std::move(scheduler)) {}

std::shared_ptr<WalkDir> FolderWalk::start() const {
    return std::make_shared<WalkDir>(path);
}

void FolderWalk::dropQueuedWork() {
    if (const std::shared_ptr<WalkScheduler> running = scheduler.lock())
        running->drop(*this);
}

void FolderWalk::read(const std::shared_ptr<WalkDir>& dir, char* buffer, WalkScheduler& scheduler) {
    if (isCancelled())
        finish(*dir, {}, scheduler);
    else if (!dir->isWalkedFolder())
        readBelow(dir, buffer, scheduler);
    else if (kind == Kind::SingleItem)
        measureItem(scheduler);
    else
        readWalkedFolder(dir, buffer, scheduler);
}

void FolderWalk::measureItem(WalkScheduler& scheduler) {
    const qint64 bytes = fileAllocatedSize(path);
    deliverLast([bytes](WalkReceiver& receiver) { receiver.walkEnded(bytes); });
    scheduler.retire(*this);
}

void FolderWalk::readWalkedFolder(const std::shared_ptr<WalkDir>& root, char* buffer,
                                  WalkScheduler& scheduler) {
    const bool listing = kind == Kind::Listing;
    Counts counts;
    struct stat st {};
    // The folder asked for is taken where a link leads, as du -H does.
    const int fd = open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0 || fstat(fd, &st) != 0) {
        if (fd >= 0)
            close(fd);
        // Unreadable, or not a folder: du still counts what the path leads to.
        if (stat(path.constData(), &st) == 0) {
            counts.folder = st.st_blocks;
            if (listing)
                deliver([&st](WalkReceiver& receiver) {
                    receiver.folderIdentified({st.st_dev, st.st_ino});
                });
        }
        if (listing)
            deliver([](WalkReceiver& receiver) { receiver.listingEnded(0); });
        finish(*root, counts, scheduler);
        return;
    }
    root->dev = st.st_dev;
    root->ino = st.st_ino;
    counts.folder = st.st_blocks;
    if (listing)
        deliver([&st](WalkReceiver& receiver) {
            receiver.folderIdentified({st.st_dev, st.st_ino});
        });

    size_t listed = 0;
    std::vector<WalkEntry> entries;
    std::vector<std::shared_ptr<WalkDir>> found;
    // Child folders measured without being entered (another kind of file system).
    std::vector<std::shared_ptr<ChildTally>> notEntered;
    // Entries reach the receiver before any of their sizes can.
    const auto handOver = [&] {
        if (!entries.empty())
            deliver([&](WalkReceiver& receiver) { receiver.entriesListed(std::move(entries)); });
        entries.clear();
        for (const std::shared_ptr<ChildTally>& child : notEntered)
            childDone(*child);
        notEntered.clear();
        queue(found, scheduler);
    };

    DirectoryReader reader(fd, buffer, bufferSize);
    while (!isCancelled() && reader.readBatch()) {
        while (const char* rawName = reader.nextName()) {
            const QByteArray name(rawName);
            if (reader.lastType() == DT_DIR) {
                // Listed at once and looked at by the worker that reads it: a folder
                // that does not answer (a hung mount) holds up its own size only.
                std::shared_ptr<ChildTally> child;
                if (listing) {
                    child = std::make_shared<ChildTally>(listed + entries.size());
                    entries.push_back({name, true, -1, ItemKind::Folder, reader.lastInode()});
                }
                found.push_back(std::make_shared<WalkDir>(root, name, child));
            } else if (struct stat entry{};
                       fstatat(fd, rawName, &entry, AT_SYMLINK_NOFOLLOW) != 0) {
                // Neither du nor anyone can count it; the listing still shows it.
                if (listing)
                    entries.push_back({name, false, 0, ItemKind::File, reader.lastInode()});
            } else if (!S_ISDIR(entry.st_mode)) {
                if (listing)
                    entries.push_back({name, false, qint64(entry.st_blocks) * 512,
                                       kindOfMode(entry.st_mode), reader.lastInode()});
                countFile(*root, entry, counts);
            } else {
                std::shared_ptr<ChildTally> child;
                if (listing) {
                    child = std::make_shared<ChildTally>(listed + entries.size());
                    entries.push_back({name, true, -1, ItemKind::Folder, reader.lastInode()});
                }
                // A bind mount of the folder into itself: its child's du counts it once,
                // the folder's own du not at all.
                const bool countsForFolder = loopOf(*root, entry) == Loop::None;
                if (!countsForFolder && !child)
                    continue;
                if (countsForFolder)
                    counts.folder += entry.st_blocks;
                if (child)
                    child->blocks += entry.st_blocks;
                if (isEntered(fd, rawName, entry, root->dev))
                    found.push_back(
                        std::make_shared<WalkDir>(root, name, entry, child, countsForFolder));
                else if (child)
                    notEntered.push_back(child);
            }
            if (entries.size() >= listingBatch) {
                listed += entries.size();
                handOver();
            }
        }
        listed += entries.size();
        handOver();
    }
    close(fd);
    if (listing)
        deliver([listed](WalkReceiver& receiver) { receiver.listingEnded(listed); });
    finish(*root, counts, scheduler);
}

void FolderWalk::readBelow(const std::shared_ptr<WalkDir>& dir, char* buffer,
                           WalkScheduler& scheduler) {
    Counts counts;
    if (dir->unlooked && !lookAtFolderOfWalked(*dir, counts)) {
        finish(*dir, counts, scheduler);
        return;
    }
    const int fd = openBelow(*dir);
    // A folder that cannot be opened counts its own size (already counted) and nothing
    // beneath, as du counts it.
    if (fd >= 0) {
        std::vector<std::shared_ptr<WalkDir>> found;
        DirectoryReader reader(fd, buffer, bufferSize);
        while (!isCancelled() && reader.readBatch()) {
            while (const char* name = reader.nextName()) {
                struct stat st {};
                if (fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                    continue; // du cannot count what it cannot stat either
                if (!S_ISDIR(st.st_mode)) {
                    countFile(*dir, st, counts);
                    continue;
                }
                const Loop loop = loopOf(*dir, st);
                if (loop == Loop::Inner || (loop == Loop::OfWalkedFolder && !dir->child))
                    continue;
                const bool countsForFolder = dir->countsForFolder && loop == Loop::None;
                if (dir->child)
                    counts.child += st.st_blocks;
                if (countsForFolder)
                    counts.folder += st.st_blocks;
                if (isEntered(fd, name, st, dir->dev))
                    found.push_back(
                        std::make_shared<WalkDir>(dir, name, st, dir->child, countsForFolder));
            }
            // Other workers can start on these while this one reads on.
            queue(found, scheduler);
        }
        close(fd);
    }
    finish(*dir, counts, scheduler);
}

bool FolderWalk::lookAtFolderOfWalked(WalkDir& dir, Counts& counts) {
    const QByteArray path = childPath(dir.parent->name, dir.name);
    struct stat st {};
    if (fstatat(AT_FDCWD, path.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return false; // gone since it was listed: nothing left to count
    if (!S_ISDIR(st.st_mode)) {
        countFile(dir, st, counts); // replaced by a file since it was listed
        return false;
    }
    // A bind mount of the walked folder into itself: its child's du counts it once,
    // the folder's own du not at all.
    dir.countsForFolder = loopOf(*dir.parent, st) == Loop::None;
    if (!dir.countsForFolder && !dir.child)
        return false;
    if (dir.countsForFolder)
        counts.folder += st.st_blocks;
    counts.child += st.st_blocks;
    dir.dev = st.st_dev;
    dir.ino = st.st_ino;
    return isEntered(AT_FDCWD, path.constData(), st, dir.parent->dev);
}

void FolderWalk::countFile(const WalkDir& dir, const struct stat& st, Counts& counts) {
    const qint64 blocks = st.st_blocks;
    if (st.st_nlink <= 1) {
        if (dir.child)
            counts.child += blocks;
        if (dir.countsForFolder)
            counts.folder += blocks;
        return;
    }
    // Counted once per total: once in its child's, once in the folder's.
    const LinkedFile file{st.st_dev, st.st_ino};
    std::lock_guard guard(linkLock);
    if (dir.child && dir.child->links.insert(file).second)
        counts.child += blocks;
    if (dir.countsForFolder && folderLinks.insert(file).second)
        counts.folder += blocks;
}

void FolderWalk::queue(std::vector<std::shared_ptr<WalkDir>>& found, WalkScheduler& scheduler) {
    if (found.empty())
        return;
    // Counted before this folder's own count drops, so no total is reported early.
    for (const std::shared_ptr<WalkDir>& dir : found)
        if (dir->child)
            dir->child->outstanding.fetch_add(1, std::memory_order_relaxed);
    outstanding.fetch_add(qint64(found.size()), std::memory_order_relaxed);
    scheduler.queue(shared_from_this(), found);
}

void FolderWalk::finish(const WalkDir& dir, const Counts& counts, WalkScheduler& scheduler) {
    if (dir.child)
        dir.child->blocks.fetch_add(counts.child, std::memory_order_relaxed);
    folderBlocks.fetch_add(counts.folder, std::memory_order_relaxed);
    if (dir.child && dir.child->outstanding.fetch_sub(1, std::memory_order_acq_rel) == 1)
        childDone(*dir.child);
    if (outstanding.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    const qint64 total = duTotalBytes(folderBlocks.load(std::memory_order_relaxed));
    deliverLast([total](WalkReceiver& receiver) { receiver.walkEnded(total); });
    {
        std::lock_guard guard(linkLock);
        folderLinks = {};
    }
    scheduler.retire(*this);
}

void FolderWalk::childDone(const ChildTally& child) {
    const qint64 bytes = duTotalBytes(child.blocks.load(std::memory_order_relaxed));
    deliver([&](WalkReceiver& receiver) { receiver.childMeasured(child.index, bytes); });
}
