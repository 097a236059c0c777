// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/SizeIndex.h"

#include <algorithm>
#include <cstring>

namespace {

// A total as du -sk gives it: 512-byte blocks summed, rounded up to whole KiB once.
qint64 duBytes(qint64 blocks) {
    return (std::max<qint64>(blocks, 0) + 1) / 2 * 1024;
}

enum EntryFlag : quint16 { kHardLinked = 1, kBigBlocks = 2, kBigApparent = 4 };

constexpr quint32 kSmall = 0xFFFFFFFFu;

} // namespace

// 32 bytes. A file's fields never change once it is in; a folder's mutable part lives
// in its folder record, which blocksOrFolder names.
struct SizeIndex::Entry {
    quint64 ino = 0;
    EntryId parent = kNoEntry;
    quint32 name = 0;
    quint32 mtime = 0;
    std::atomic<quint32> blocksOrFolder{0};
    quint32 apparent = 0;
    quint8 nameLength = 0;
    quint8 kind = 0;
    quint16 flags = 0;
};

struct SizeIndex::Folder {
    // The first run of its entries: (first id << 32) | count; 0 before any.
    std::atomic<quint64> firstRun{0};
    std::atomic<RunList*> more{nullptr};
    std::atomic<qint64> blocks{0};
    std::atomic<qint64> apparent{0};
    std::atomic<qint64> modifiedNs{0};
    std::atomic<quint64> ino{0};
    std::atomic<quint32> items{0};
    std::atomic<quint32> unreadable{0};
    std::atomic<quint32> newest{0};
    std::atomic<quint16> state{0};
    // Place in the device table, plus one; 0 before its look.
    std::atomic<quint16> device{0};
};

struct SizeIndex::RunList {
    static constexpr quint32 kRuns = 62;
    std::atomic<quint32> count{0};
    Run runs[kRuns];
    std::atomic<RunList*> next{nullptr};
};

// Items in blocks of 2^BlockBits, allocated as needed and never moved, so that readers
// on any thread find an item where it was put.
template <typename T, int BlockBits, int Blocks> class SizeIndex::Store {
public:
    Store() : table(new std::atomic<T*>[Blocks]) {
        for (int i = 0; i < Blocks; ++i)
            table[i].store(nullptr, std::memory_order_relaxed);
    }
    ~Store() {
        for (int i = 0; i < Blocks; ++i)
            delete[] table[i].load(std::memory_order_relaxed);
    }
    // Room for `count` new items in a row: the first one's place, or kSmall when full.
    quint32 reserve(quint32 count) {
        std::lock_guard guard(lock);
        const quint64 end = quint64(next.load(std::memory_order_relaxed)) + count;
        if (end > (quint64(Blocks) << BlockBits))
            return kSmall;
        const quint32 first = next.load(std::memory_order_relaxed);
        for (quint64 block = first >> BlockBits; count > 0 && block <= (end - 1) >> BlockBits;
             ++block)
            if (!table[block].load(std::memory_order_relaxed)) {
                table[block].store(new T[1u << BlockBits](), std::memory_order_release);
                ++allocated;
            }
        next.store(quint32(end), std::memory_order_release);
        return first;
    }
    T& operator[](quint32 id) const {
        return table[id >> BlockBits].load(std::memory_order_acquire)[id & ((1u << BlockBits) - 1)];
    }
    quint32 size() const { return next.load(std::memory_order_acquire); }
    size_t bytes() const {
        std::lock_guard guard(lock);
        return allocated * (sizeof(T) << BlockBits) + Blocks * sizeof(std::atomic<T*>);
    }

private:
    const std::unique_ptr<std::atomic<T*>[]> table;
    mutable std::mutex lock;
    std::atomic<quint32> next{0};
    size_t allocated = 0;
};

// The names, one after another in blocks; a name never spans two blocks.
struct SizeIndex::Names {
    static constexpr int kBits = 18;
    static constexpr quint32 kBlock = 1u << kBits;
    static constexpr int kBlocks = 1 << 14;

    Names() : table(new std::atomic<char*>[kBlocks]) {
        for (int i = 0; i < kBlocks; ++i)
            table[i].store(nullptr, std::memory_order_relaxed);
    }
    ~Names() {
        for (int i = 0; i < kBlocks; ++i)
            delete[] table[i].load(std::memory_order_relaxed);
    }
    // Where each of the batch's names went; false when the pool is full.
    bool store(const std::vector<NewEntry>& batch, std::vector<quint32>& offsets) {
        std::lock_guard guard(lock);
        offsets.resize(batch.size());
        for (size_t i = 0; i < batch.size(); ++i) {
            const quint32 length = quint32(batch[i].name.size());
            if ((used & (kBlock - 1)) + length > kBlock)
                used = (used | (kBlock - 1)) + 1;
            const quint64 block = used >> kBits;
            if (block >= quint64(kBlocks) || quint64(used) + length > 0xFFFFFFFFull)
                return false;
            if (!table[block].load(std::memory_order_relaxed)) {
                table[block].store(new char[kBlock], std::memory_order_release);
                ++allocated;
            }
            std::memcpy(table[block].load(std::memory_order_relaxed) + (used & (kBlock - 1)),
                        batch[i].name.constData(), length);
            offsets[i] = used;
            used += length;
        }
        return true;
    }
    QByteArray at(quint32 offset, quint32 length) const {
        const char* block = table[offset >> kBits].load(std::memory_order_acquire);
        return QByteArray(block + (offset & (kBlock - 1)), length);
    }
    size_t bytes() const {
        std::lock_guard guard(lock);
        return allocated * size_t(kBlock) + kBlocks * sizeof(std::atomic<char*>);
    }

    const std::unique_ptr<std::atomic<char*>[]> table;
    mutable std::mutex lock;
    quint32 used = 0;
    size_t allocated = 0;
};

SizeIndex::SizeIndex(QByteArray path_)
    : path(std::move(path_)), entries(std::make_unique<Store<Entry, 14, 1 << 14>>()),
      folders(std::make_unique<Store<Folder, 12, 1 << 14>>()), names(std::make_unique<Names>()) {
    static_assert(sizeof(Entry) == 32, "an entry is 32 bytes");
    entries->reserve(1);
    Entry& top = (*entries)[0];
    top.kind = quint8(ItemKind::Folder);
    top.blocksOrFolder.store(newFolder(), std::memory_order_release);
}

SizeIndex::~SizeIndex() = default;

const SizeIndex::Entry& SizeIndex::entry(EntryId id) const {
    return (*entries)[id];
}

SizeIndex::Folder& SizeIndex::folderOf(EntryId id) const {
    return (*folders)[entry(id).blocksOrFolder.load(std::memory_order_acquire)];
}

quint32 SizeIndex::newFolder() {
    return folders->reserve(1);
}

size_t SizeIndex::size() const {
    return entries->size();
}

QByteArray SizeIndex::name(EntryId id) const {
    if (id == root())
        return path;
    const Entry& e = entry(id);
    return names->at(e.name, e.nameLength);
}

QByteArray SizeIndex::relativePath(EntryId id) const {
    std::vector<EntryId> chain;
    for (EntryId at = id; at != root() && at != kNoEntry; at = parent(at))
        chain.push_back(at);
    QByteArray relative;
    for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
        if (!relative.isEmpty())
            relative += '/';
        relative += name(*at);
    }
    return relative;
}

QByteArray SizeIndex::pathOf(EntryId id) const {
    if (id == root())
        return path;
    const QByteArray relative = relativePath(id);
    return path.endsWith('/') ? path + relative : path + '/' + relative;
}

EntryId SizeIndex::parent(EntryId id) const {
    return entry(id).parent;
}

ItemKind SizeIndex::kind(EntryId id) const {
    return ItemKind(entry(id).kind);
}

quint64 SizeIndex::listedIno(EntryId id) const {
    return entry(id).ino;
}

bool SizeIndex::isHardLinked(EntryId id) const {
    return entry(id).flags & kHardLinked;
}

quint32 SizeIndex::modified(EntryId id) const {
    if (!isFolder(id))
        return entry(id).mtime;
    return folderOf(id).newest.load(std::memory_order_acquire);
}

qint64 SizeIndex::allocated(EntryId id) const {
    const Entry& e = entry(id);
    if (e.kind == quint8(ItemKind::Folder))
        return duBytes(folderOf(id).blocks.load(std::memory_order_acquire));
    if (e.flags & kBigBlocks) {
        std::lock_guard guard(bigLock);
        return bigBlocks.value(id) * 512;
    }
    return qint64(e.blocksOrFolder.load(std::memory_order_relaxed)) * 512;
}

qint64 SizeIndex::apparent(EntryId id) const {
    const Entry& e = entry(id);
    if (e.kind == quint8(ItemKind::Folder))
        return folderOf(id).apparent.load(std::memory_order_acquire);
    if (e.flags & kBigApparent) {
        std::lock_guard guard(bigLock);
        return bigApparent.value(id);
    }
    return e.apparent;
}

qint64 SizeIndex::blocksOf(EntryId folder) const {
    return folderOf(folder).blocks.load(std::memory_order_acquire);
}

quint16 SizeIndex::state(EntryId folder) const {
    // A file has no state of its own: asked of one, none.
    if (!isFolder(folder))
        return 0;
    return folderOf(folder).state.load(std::memory_order_acquire);
}

quint32 SizeIndex::itemsBelow(EntryId folder) const {
    return folderOf(folder).items.load(std::memory_order_acquire);
}

quint32 SizeIndex::unreadableBelow(EntryId folder) const {
    return folderOf(folder).unreadable.load(std::memory_order_acquire);
}

quint64 SizeIndex::device(EntryId folder) const {
    const quint16 place = folderOf(folder).device.load(std::memory_order_acquire);
    if (place == 0)
        return 0;
    std::lock_guard guard(devicesLock);
    return devices[place - 1u];
}

quint64 SizeIndex::ownIno(EntryId folder) const {
    return folderOf(folder).ino.load(std::memory_order_acquire);
}

qint64 SizeIndex::ownModifiedNs(EntryId folder) const {
    return folderOf(folder).modifiedNs.load(std::memory_order_acquire);
}

size_t SizeIndex::childCount(EntryId folder) const {
    const Folder& f = folderOf(folder);
    size_t count = quint32(f.firstRun.load(std::memory_order_acquire));
    for (const RunList* list = f.more.load(std::memory_order_acquire); list;
         list = list->next.load(std::memory_order_acquire)) {
        const quint32 runs = list->count.load(std::memory_order_acquire);
        for (quint32 i = 0; i < runs; ++i)
            count += list->runs[i].count;
    }
    return count;
}

std::vector<EntryId> SizeIndex::children(EntryId folder) const {
    const Folder& f = folderOf(folder);
    std::vector<EntryId> ids;
    const quint64 first = f.firstRun.load(std::memory_order_acquire);
    const auto add = [&ids](EntryId start, quint32 count) {
        for (quint32 i = 0; i < count; ++i)
            ids.push_back(start + i);
    };
    add(EntryId(first >> 32), quint32(first));
    for (const RunList* list = f.more.load(std::memory_order_acquire); list;
         list = list->next.load(std::memory_order_acquire)) {
        const quint32 runs = list->count.load(std::memory_order_acquire);
        for (quint32 i = 0; i < runs; ++i)
            add(list->runs[i].first, list->runs[i].count);
    }
    return ids;
}

std::vector<EntryId> SizeIndex::children(EntryId folder, size_t from, size_t count) const {
    const Folder& f = folderOf(folder);
    std::vector<EntryId> ids;
    size_t position = 0;
    const auto take = [&](EntryId start, quint32 length) {
        for (quint32 i = 0; i < length && ids.size() < count; ++i, ++position)
            if (position >= from)
                ids.push_back(start + i);
            else if (from - position >= length - i) {
                position += length - i; // the whole rest of the run lies before `from`
                break;
            }
    };
    const quint64 first = f.firstRun.load(std::memory_order_acquire);
    take(EntryId(first >> 32), quint32(first));
    for (const RunList* list = f.more.load(std::memory_order_acquire); list && ids.size() < count;
         list = list->next.load(std::memory_order_acquire)) {
        const quint32 runs = list->count.load(std::memory_order_acquire);
        for (quint32 i = 0; i < runs && ids.size() < count; ++i)
            take(list->runs[i].first, list->runs[i].count);
    }
    return ids;
}

EntryId SizeIndex::append(EntryId folder, const std::vector<NewEntry>& batch) {
    if (batch.empty())
        return kNoEntry;
    std::vector<quint32> offsets;
    if (!names->store(batch, offsets))
        return kNoEntry;
    const quint32 first = entries->reserve(quint32(batch.size()));
    if (first == kSmall || first + batch.size() > kMaxEntries)
        return kNoEntry;
    for (size_t i = 0; i < batch.size(); ++i) {
        const NewEntry& in = batch[i];
        const EntryId id = first + EntryId(i);
        Entry& e = (*entries)[id];
        e.ino = in.ino;
        e.parent = folder;
        e.name = offsets[i];
        e.nameLength = quint8(std::min<qsizetype>(in.name.size(), 255));
        e.kind = quint8(in.kind);
        e.mtime = quint32(std::clamp<qint64>(in.mtime, 0, 0xFFFFFFFFll));
        e.flags = in.hardLinked ? kHardLinked : 0;
        if (in.kind == ItemKind::Folder) {
            e.blocksOrFolder.store(newFolder(), std::memory_order_relaxed);
            continue;
        }
        const bool manyBlocks = in.blocks >= qint64(kSmall);
        const bool longFile = in.apparent >= qint64(kSmall);
        e.blocksOrFolder.store(manyBlocks ? 0 : quint32(std::max<qint64>(in.blocks, 0)),
                               std::memory_order_relaxed);
        e.apparent = longFile ? 0 : quint32(std::max<qint64>(in.apparent, 0));
        if (manyBlocks || longFile) {
            std::lock_guard guard(bigLock);
            if (manyBlocks)
                bigBlocks.insert(id, in.blocks);
            if (longFile)
                bigApparent.insert(id, in.apparent);
            e.flags |= (manyBlocks ? kBigBlocks : 0) | (longFile ? kBigApparent : 0);
        }
    }
    // Published last: a reader that sees the run sees its entries.
    Folder& f = folderOf(folder);
    const quint64 run = (quint64(first) << 32) | quint32(batch.size());
    if (f.firstRun.load(std::memory_order_relaxed) == 0) {
        f.firstRun.store(run, std::memory_order_release);
        return first;
    }
    RunList* last = f.more.load(std::memory_order_relaxed);
    while (last && last->next.load(std::memory_order_relaxed))
        last = last->next.load(std::memory_order_relaxed);
    if (!last || last->count.load(std::memory_order_relaxed) == RunList::kRuns) {
        auto list = std::make_unique<RunList>();
        RunList* added = list.get();
        {
            std::lock_guard guard(runListsLock);
            runLists.push_back(std::move(list));
        }
        (last ? last->next : f.more).store(added, std::memory_order_release);
        last = added;
    }
    const quint32 at = last->count.load(std::memory_order_relaxed);
    last->runs[at] = {first, quint32(batch.size())};
    last->count.store(at + 1, std::memory_order_release);
    return first;
}

void SizeIndex::restart(EntryId folder) {
    const quint32 fresh = newFolder();
    if (fresh != kSmall)
        (*entries)[folder].blocksOrFolder.store(fresh, std::memory_order_release);
}

void SizeIndex::setLooked(EntryId folder, quint64 dev, quint64 ino, qint64 modifiedNs) {
    quint16 place = 0;
    {
        std::lock_guard guard(devicesLock);
        const auto known = std::ranges::find(devices, dev);
        if (known != devices.end()) {
            place = quint16(known - devices.begin() + 1);
        } else if (devices.size() < 0xFFFF) {
            devices.push_back(dev);
            place = quint16(devices.size());
        }
    }
    Folder& f = folderOf(folder);
    f.modifiedNs.store(modifiedNs, std::memory_order_release);
    f.ino.store(ino, std::memory_order_release);
    f.device.store(place, std::memory_order_release);
}

void SizeIndex::addState(EntryId folder, quint16 added) {
    folderOf(folder).state.fetch_or(added, std::memory_order_acq_rel);
}

void SizeIndex::setTotals(EntryId folder, qint64 blocks, qint64 apparent, quint32 items,
                          quint32 unreadable, quint32 newest) {
    Folder& f = folderOf(folder);
    f.blocks.store(blocks, std::memory_order_release);
    f.apparent.store(apparent, std::memory_order_release);
    f.items.store(items, std::memory_order_release);
    f.unreadable.store(unreadable, std::memory_order_release);
    f.newest.store(newest, std::memory_order_release);
}

void SizeIndex::adjustTotals(EntryId folder, qint64 blocks, qint64 apparent, qint64 items,
                             qint64 unreadable, quint32 newest) {
    Folder& f = folderOf(folder);
    f.blocks.fetch_add(blocks, std::memory_order_acq_rel);
    f.apparent.fetch_add(apparent, std::memory_order_acq_rel);
    f.items.fetch_add(quint32(items), std::memory_order_acq_rel);
    f.unreadable.fetch_add(quint32(unreadable), std::memory_order_acq_rel);
    quint32 was = f.newest.load(std::memory_order_relaxed);
    while (newest > was && !f.newest.compare_exchange_weak(was, newest))
        ;
}

size_t SizeIndex::memoryUsed() const {
    size_t bytes = entries->bytes() + folders->bytes() + names->bytes();
    {
        std::lock_guard guard(runListsLock);
        bytes += runLists.size() * sizeof(RunList);
    }
    {
        std::lock_guard guard(bigLock);
        bytes += size_t(bigApparent.size() + bigBlocks.size()) * 32;
    }
    return bytes;
}
