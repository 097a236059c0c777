// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/FileId.h"
#include "platform/Outcome.h"

#include <QByteArray>
#include <QHash>
#include <atomic>
#include <sys/stat.h>

// Copies an item into a new place made for it, for a worker thread. Everything is read
// through descriptors of the source's folders, opened without following links, and
// written into the new item only: links are copied as links, permissions and
// modification times are kept, holes stay holes, blocks are shared (reflink) or copied
// inside the kernel where the file system can, and files that are hard links of each
// other inside a copied folder stay hard links of each other in the copy.
class TreeCopy {
public:
    // Fills the new, empty folder `into` with copies of everything in the folder `from`,
    // then gives it from's mode and times (`info`, from's stat).
    Done copyFolderInto(int from, int into, const struct stat& info);
    // Copies the regular file open as `in` into the new, empty file `out`, with its mode
    // and times.
    Done copyFileInto(int in, int out, const struct stat& info);
    // Makes a symbolic link, pipe, socket or device node `name` of folder `from` anew as
    // `newName` in folder `into`: never opened, created exclusively.
    Done copyOtherInto(int from, const QByteArray& name, int into, const QByteArray& newName,
                       const struct stat& info);

    // From any thread: stop as soon as possible (ECANCELED).
    void cancel() { stop = true; }
    // Before the copy starts, on its thread: once `flag` is set the copy stops as after
    // cancel().
    void alsoStopOn(const std::atomic<bool>& flag) { alsoStop = &flag; }
    bool isCancelled() const { return stop || (alsoStop && *alsoStop); }
    // From any thread: bytes of file content copied so far.
    qint64 bytesDone() const { return done; }

private:
    Done copyEntry(int from, const QByteArray& name, int into, int top, const QByteArray& relative,
                   bool& entered);
    Done copyContent(int in, int out, off_t size);
    Done copyRange(int in, int out, off_t from, off_t to);

    std::atomic<bool> stop{false};
    const std::atomic<bool>* alsoStop = nullptr;
    std::atomic<qint64> done{0};
    // The first copy of each file with several links, by its place below the copy's top.
    QHash<QPair<quint64, quint64>, QByteArray> linkedCopies;
};
