// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/IndexWalk.h"

#include "core/WalkScheduler.h"
#include "platform/DirectoryReader.h"
#include "platform/PseudoFileSystem.h"
#include "platform/UniqueFd.h"

#include <array>
#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// For a path longer than the kernel takes in one call: opened a stretch at a time.
int openInStretches(const WalkDir& dir, int flags) {
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
    const int fd = openat(base, stretch.constData(), flags);
    if (base != AT_FDCWD)
        close(base);
    return fd;
}

// The folder, its last component not followed (the walked folder's own path is taken
// where it leads). The path is put together in place from the chain of names.
int openWalkDir(const WalkDir& dir, int flags) {
    if (dir.isWalkedFolder())
        return open(dir.name.constData(), flags & ~O_NOFOLLOW);
    // A name takes at least two bytes with its slash: a path that fits has at most
    // PATH_MAX / 2 of them.
    std::array<const QByteArray*, PATH_MAX / 2> names;
    size_t count = 0;
    size_t length = 0; // every name with its slash, the last with the terminating zero
    for (const WalkDir* d = &dir; d; d = d->parent.get()) {
        length += size_t(d->name.size()) + 1;
        if (length > PATH_MAX || count == names.size())
            return openInStretches(dir, flags);
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
    return open(path.data(), flags);
}

// A folder met again below itself.
bool isLoop(const WalkDir& dir, const struct stat& st) {
    for (const WalkDir* up = dir.parent.get(); up; up = up->parent.get())
        if (up->dev == quint64(st.st_dev) && up->ino == quint64(st.st_ino))
            return true;
    return false;
}

qint64 nanoseconds(const timespec& time) {
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

quint32 seconds(const timespec& time) {
    return quint32(std::clamp<qint64>(time.tv_sec, 0, 0xFFFFFFFFll));
}

constexpr quint16 kCannotRead = Unreadable | PartlyUnreadable;

} // namespace

WalkDir::WalkDir(std::shared_ptr<WalkDir> parent, QByteArray name, std::shared_ptr<WalkTally> tally)
    : parent(std::move(parent)), name(std::move(name)), tally(std::move(tally)) {}

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

IndexWalk::IndexWalk(std::shared_ptr<SizeIndex> index, EntryId folder, QByteArray path,
                     WalkOptions options, std::shared_ptr<WalkListener> listener,
                     std::weak_ptr<WalkScheduler> scheduler)
    : index(std::move(index)), walked(folder), path(std::move(path)), options(options),
      scheduler(std::move(scheduler)), listener(std::move(listener)) {}

std::shared_ptr<WalkDir> IndexWalk::start() {
    return std::make_shared<WalkDir>(nullptr, path, std::make_shared<WalkTally>(walked, nullptr));
}

void IndexWalk::cancel() {
    std::shared_ptr<WalkListener> released;
    {
        std::lock_guard guard(callLock);
        cancelled.store(true, std::memory_order_release);
        released = std::move(listener);
    }
    if (const std::shared_ptr<WalkScheduler> running = scheduler.lock())
        running->drop(*this);
}

template <typename Call> void IndexWalk::tell(Call&& call) {
    std::lock_guard guard(callLock);
    if (listener)
        call(*listener);
}

void IndexWalk::read(const std::shared_ptr<WalkDir>& dir, char* buffer, WalkScheduler& workers) {
    // A cancelled walk's totals are never finished: the tree marks what it left.
    if (isCancelled())
        return;
    int fd = -1;
    if (look(*dir, fd)) {
        readEntries(dir, fd, buffer, workers);
        close(fd);
        index->addState(dir->tally->id, Listed);
    }
    finish(dir->tally);
}

bool IndexWalk::look(WalkDir& dir, int& fd) {
    WalkTally& tally = *dir.tally;
    const EntryId id = tally.id;
    const auto mark = [&](quint16 state) {
        index->addState(id, state);
        std::lock_guard guard(tally.lock);
        tally.state |= state;
    };
    const auto countOwn = [&](const struct stat& st) {
        std::lock_guard guard(tally.lock);
        tally.blocks += st.st_blocks;
        tally.apparent += st.st_size;
        counted.blocks.fetch_add(st.st_blocks, std::memory_order_relaxed);
    };
    struct stat st {};
    if (dir.isWalkedFolder()) {
        // Taken where a link leads, as du -H does.
        fd = open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0 && fstat(fd, &st) == 0) {
            dir.dev = st.st_dev;
            dir.ino = st.st_ino;
            index->setLooked(id, st.st_dev, st.st_ino, nanoseconds(st.st_mtim));
            countOwn(st);
            return true;
        }
        if (fd >= 0)
            close(fd);
        // Unreadable, or not a folder: du still counts what the path leads to.
        if (stat(path.constData(), &st) == 0) {
            index->setLooked(id, st.st_dev, st.st_ino, nanoseconds(st.st_mtim));
            countOwn(st);
        }
        mark(Unreadable);
        return false;
    }
    // Looked at by the worker that reads it, not by the one that listed it: a folder
    // that does not answer (a hung mount) holds up its own walk only.
    const UniqueFd parent(openWalkDir(*dir.parent, O_PATH | O_DIRECTORY | O_CLOEXEC));
    const char* name = dir.name.constData();
    if (!parent || fstatat(parent.get(), name, &st, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
        mark(Unreadable); // gone since it was listed
        return false;
    }
    if (!S_ISDIR(st.st_mode)) {
        countOwn(st); // replaced by something else since it was listed
        return false;
    }
    index->setLooked(id, st.st_dev, st.st_ino, nanoseconds(st.st_mtim));
    if (isLoop(dir, st)) {
        mark(Loop);
        return false;
    }
    const bool otherVolume = quint64(st.st_dev) != dir.parent->dev;
    if (otherVolume) {
        mark(OtherVolume);
        // Left out whole, as du -x leaves it out: not even the folder's own size.
        if (!options.countMounts) {
            mark(NotEntered);
            return false;
        }
    }
    dir.dev = st.st_dev;
    dir.ino = st.st_ino;
    countOwn(st);
    if (otherVolume && isBlocklessFileSystem(parent.get(), name)) {
        mark(KernelFileSystem);
        return false;
    }
    // Stopped meanwhile: the folder is not opened, which on a slow volume is one more wait.
    if (isCancelled())
        return false;
    fd = openat(parent.get(), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        // Its own size is counted, and nothing beneath it, as du counts it.
        mark(Unreadable);
        return false;
    }
    return true;
}

// What one folder's reading has gathered since its last run went into the index.
struct IndexWalk::Reading {
    std::vector<SizeIndex::NewEntry> batch;
    // Positions in the batch of the folders found, to be queued once they have ids.
    std::vector<size_t> folders;
    qint64 blocks = 0;
    qint64 apparent = 0;
    quint32 newest = 0;
    bool partly = false;
};

void IndexWalk::readEntries(const std::shared_ptr<WalkDir>& dir, int fd, char* buffer,
                            WalkScheduler& workers) {
    WalkTally& tally = *dir->tally;
    Reading reading;
    const auto flush = [&] {
        if (reading.batch.empty())
            return true;
        EntryId first = kNoEntry;
        {
            // Once cancel() has returned nothing more goes into the index: the tree marks
            // what a stopped walk left, and entries added after that would be in no total.
            std::lock_guard guard(callLock);
            if (isCancelled())
                return false;
            first = index->append(tally.id, reading.batch);
        }
        if (first == kNoEntry) {
            reading.partly = true; // the index is full
            return false;
        }
        std::vector<std::shared_ptr<WalkDir>> found;
        found.reserve(reading.folders.size());
        for (const size_t at : reading.folders) {
            auto below = std::make_shared<WalkTally>(first + EntryId(at), dir->tally);
            found.push_back(
                std::make_shared<WalkDir>(dir, reading.batch[at].name, std::move(below)));
        }
        {
            std::lock_guard guard(tally.lock);
            tally.items += quint32(reading.batch.size());
            tally.blocks += reading.blocks;
            tally.apparent += reading.apparent;
            tally.newest = std::max(tally.newest, reading.newest);
        }
        // Counted before this folder's own count drops, so no total is reported early.
        tally.outstanding.fetch_add(qint64(found.size()), std::memory_order_relaxed);
        counted.items.fetch_add(reading.batch.size(), std::memory_order_relaxed);
        counted.blocks.fetch_add(reading.blocks, std::memory_order_relaxed);
        reading = {};
        tell([&](WalkListener& to) { to.listed(tally.id); });
        workers.queue(shared_from_this(), found);
        return true;
    };

    DirectoryReader reader(fd, buffer, bufferSize);
    bool more = true;
    while (more && !isCancelled() && reader.readBatch()) {
        while (const char* name = reader.nextName()) {
            // A stopped walk's worker goes no further than the call it was in.
            if (isCancelled()) {
                more = false;
                break;
            }
            SizeIndex::NewEntry entry;
            entry.name = QByteArray(name);
            entry.ino = reader.lastInode();
            struct stat st {};
            if (reader.lastType() == DT_DIR) {
                entry.kind = ItemKind::Folder;
            } else if (fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
                // Neither du nor anyone can count it; the listing still shows it.
                reading.partly = true;
            } else if (S_ISDIR(st.st_mode)) {
                entry.kind = ItemKind::Folder;
            } else {
                entry.kind = kindOfMode(st.st_mode);
                entry.ino = st.st_ino;
                entry.blocks = st.st_blocks;
                entry.apparent = st.st_size;
                entry.mtime = st.st_mtim.tv_sec;
                entry.hardLinked = st.st_nlink > 1;
                reading.newest = std::max(reading.newest, seconds(st.st_mtim));
                // A file with several links counts once in each total.
                bool counts = true;
                if (entry.hardLinked) {
                    std::lock_guard guard(tally.lock);
                    counts = tally.links
                                 .emplace(FileKey{quint64(st.st_dev), quint64(st.st_ino)},
                                          LinkedSizes{st.st_blocks, st.st_size})
                                 .second;
                }
                if (counts) {
                    reading.blocks += st.st_blocks;
                    reading.apparent += st.st_size;
                }
            }
            if (entry.kind == ItemKind::Folder)
                reading.folders.push_back(reading.batch.size());
            reading.batch.push_back(std::move(entry));
            if (reading.batch.size() >= kBatch && !(more = flush()))
                break;
        }
    }
    if (reader.failed())
        reading.partly = true;
    const bool partly = reading.partly;
    if (more)
        flush();
    if (partly) {
        index->addState(tally.id, PartlyUnreadable);
        std::lock_guard guard(tally.lock);
        tally.state |= PartlyUnreadable;
    }
}

void IndexWalk::finish(const std::shared_ptr<WalkTally>& done) {
    std::shared_ptr<WalkTally> tally = done;
    while (tally) {
        if (tally->outstanding.fetch_sub(1, std::memory_order_acq_rel) != 1)
            return;
        {
            // Not after cancel() has returned: the tree may be marking the folder partial.
            std::lock_guard calls(callLock);
            if (isCancelled())
                return;
            std::lock_guard guard(tally->lock);
            index->setTotals(tally->id, tally->blocks, tally->apparent, tally->items,
                             tally->unreadable, tally->newest);
            index->addState(tally->id, Measured);
        }
        tell([&](WalkListener& to) { to.measured(tally->id); });
        const std::shared_ptr<WalkTally> parent = tally->parent;
        if (!parent) {
            std::shared_ptr<WalkListener> released;
            {
                std::lock_guard guard(callLock);
                if (listener)
                    listener->ended();
                released = std::move(listener);
            }
            if (const std::shared_ptr<WalkScheduler> running = scheduler.lock())
                running->retire(*this);
            return;
        }
        {
            std::scoped_lock guard(tally->lock, parent->lock);
            parent->blocks += tally->blocks;
            parent->apparent += tally->apparent;
            parent->items += tally->items;
            parent->unreadable += tally->unreadable + ((tally->state & kCannotRead) ? 1 : 0);
            const qint64 own = index->ownModifiedNs(tally->id) / 1000000000;
            parent->newest = std::max(
                {parent->newest, tally->newest, quint32(std::clamp<qint64>(own, 0, 0xFFFFFFFFll))});
            for (const auto& [file, sizes] : tally->links)
                if (!parent->links.emplace(file, sizes).second) {
                    parent->blocks -= sizes.blocks;
                    parent->apparent -= sizes.apparent;
                }
            tally->links.clear();
        }
        tally = parent;
    }
}
