// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/FolderListing.h"

#include <QByteArray>
#include <QHash>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

// An entry of the index; its place in the index, which never changes.
using EntryId = quint32;
inline constexpr EntryId kNoEntry = 0xFFFFFFFFu;

// What the walk found out about a folder, set as it goes.
enum FolderState : quint16 {
    // Its total is final: every entry below it is counted.
    Measured = 1 << 0,
    // Its walk was stopped first: the total is what was found by then, at least.
    Partial = 1 << 1,
    // It could not be read: its own size alone is counted.
    Unreadable = 1 << 2,
    // Some of it could not be read (an entry that could not be looked at, a listing
    // cut short).
    PartlyUnreadable = 1 << 3,
    // Another volume is mounted here.
    OtherVolume = 1 << 4,
    // A kernel file system whose entries hold no blocks: not entered.
    KernelFileSystem = 1 << 5,
    // Another volume, not entered: volumes mounted inside are not counted.
    NotEntered = 1 << 6,
    // Every entry of its own is in the index.
    Listed = 1 << 7,
    // A folder met again below itself (a bind mount): not entered again.
    Loop = 1 << 8,
};

// The whole tree below an opened folder, as a walk found it: for every entry its name,
// kind, sizes, inode and modification time; for every folder its totals as `du -sk`
// gives them, how many entries are below it and what could not be read.
//
// Entries are small fixed records in large blocks, linked by 32-bit indices; names live
// in one byte pool. Walk workers append entries, a folder's in runs of consecutive ids,
// and never change them afterwards; a folder's totals and state are atomics that its
// walk sets as it goes. Nothing is freed before the index itself, so whoever holds the
// index (a view's worker, say) reads a state that stays valid while walks go on.
class SizeIndex {
public:
    // An index whose root is the opened folder at `path`.
    explicit SizeIndex(QByteArray path);
    ~SizeIndex();
    SizeIndex(const SizeIndex&) = delete;
    SizeIndex& operator=(const SizeIndex&) = delete;

    EntryId root() const { return 0; }
    const QByteArray& rootPath() const { return path; }

    // --- reading, from any thread ---
    // The entry's own name, the file system's bytes; the root's is its whole path.
    QByteArray name(EntryId id) const;
    // The path, from the root's.
    QByteArray pathOf(EntryId id) const;
    // The path below the root ("" for the root).
    QByteArray relativePath(EntryId id) const;
    EntryId parent(EntryId id) const;
    ItemKind kind(EntryId id) const;
    bool isFolder(EntryId id) const { return kind(id) == ItemKind::Folder; }
    // The inode its folder's listing gave it.
    quint64 listedIno(EntryId id) const;
    // A file's own modification time, seconds since the epoch; for a folder, the latest
    // of its own and anything below it (as far as it is measured).
    quint32 modified(EntryId id) const;
    // In bytes. A file's own allocated size; a folder's total as `du -sk` gives it
    // (rounded up to whole KiB) once measured, or what was found so far.
    qint64 allocated(EntryId id) const;
    // In bytes: a file's length; a folder's total of lengths, its own included, each
    // hard-linked file once (`du -s --apparent-size -B1`).
    qint64 apparent(EntryId id) const;
    // A file with several hard links.
    bool isHardLinked(EntryId id) const;

    // --- folders ---
    // A folder's state flags; none for a file.
    quint16 state(EntryId folder) const;
    // Its total is in: final, or what a stopped walk found.
    bool isMeasured(EntryId folder) const { return state(folder) & (Measured | Partial); }
    // Its entries so far, in the order the file system listed them.
    size_t childCount(EntryId folder) const;
    std::vector<EntryId> children(EntryId folder) const;
    // Those at listed positions from .. from + count - 1 (fewer where there are fewer).
    std::vector<EntryId> children(EntryId folder, size_t from, size_t count) const;
    // Entries below it, at any depth.
    quint32 itemsBelow(EntryId folder) const;
    // Folders below it that could not be read, wholly or partly.
    quint32 unreadableBelow(EntryId folder) const;
    // Its device, inode and own modification time (ns), as its walk looked at it; 0
    // until then.
    quint64 device(EntryId folder) const;
    quint64 ownIno(EntryId folder) const;
    qint64 ownModifiedNs(EntryId folder) const;

    // Entries in the index, counting those a walk made again since.
    size_t size() const;
    // Bytes the index holds, for the benchmarks.
    size_t memoryUsed() const;

    // --- writing, by walk workers and by the tree ---
    struct NewEntry {
        QByteArray name;
        ItemKind kind = ItemKind::File;
        quint64 ino = 0;
        qint64 blocks = 0; // 512-byte blocks
        qint64 apparent = 0;
        qint64 mtime = 0; // seconds
        bool hardLinked = false;
    };
    // Appends entries of `folder` as its next run; the first one's id, or kNoEntry when
    // the index is full. Only the one worker reading a folder appends to it.
    EntryId append(EntryId folder, const std::vector<NewEntry>& batch);
    // The folder starts over, as its walk begins again: no entries, totals or state.
    // What it had is kept for whoever still reads it.
    void restart(EntryId folder);
    // The folder's own look, by the worker that reads it.
    void setLooked(EntryId folder, quint64 device, quint64 ino, qint64 modifiedNs);
    void addState(EntryId folder, quint16 state);
    // The folder's totals: 512-byte blocks, bytes, entries below, unreadable folders
    // below, the latest modification time below.
    void setTotals(EntryId folder, qint64 blocks, qint64 apparent, quint32 items,
                   quint32 unreadable, quint32 newest);
    // Its totals changed by the difference a walk of a folder below it made.
    void adjustTotals(EntryId folder, qint64 blocks, qint64 apparent, qint64 items,
                      qint64 unreadable, quint32 newest);
    // A folder's total as it stands, in 512-byte blocks.
    qint64 blocksOf(EntryId folder) const;

    // Most entries an index holds.
    static constexpr quint32 kMaxEntries = 1u << 28;

private:
    struct Entry;
    struct Folder;
    struct Run {
        EntryId first;
        quint32 count;
    };
    struct RunList;
    struct Names;
    template <typename T, int BlockBits, int Blocks> class Store;

    const Entry& entry(EntryId id) const;
    Folder& folderOf(EntryId id) const;
    quint32 newFolder();

    const QByteArray path;
    std::unique_ptr<Store<Entry, 14, 1 << 14>> entries;
    std::unique_ptr<Store<Folder, 12, 1 << 14>> folders;
    std::unique_ptr<Names> names;
    // Run lists of folders listed in several runs, freed with the index.
    mutable std::mutex runListsLock;
    std::vector<std::unique_ptr<RunList>> runLists;
    // Sizes that do not fit an entry's 32 bits (files of 4 GiB and more).
    mutable std::mutex bigLock;
    QHash<EntryId, qint64> bigApparent, bigBlocks;
    // Devices, each kept once; a folder holds its place here.
    mutable std::mutex devicesLock;
    std::vector<quint64> devices;
};
