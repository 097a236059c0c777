// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QtGlobal>
#include <cstddef>

// Reads a folder's entries straight from the kernel, many per call (getdents64), names
// as the file system's own bytes. The caller owns the descriptor and the buffer, so a
// worker reuses one buffer for every folder it reads.
class DirectoryReader {
public:
    DirectoryReader(int fd, char* buffer, size_t capacity);

    // Folders read so far by the program (readers made): what tests and benchmarks count
    // to tell that something was shown without reading the disk.
    static quint64 foldersRead();

    // Fills the buffer with the next run of entries; false at the end or on a read error.
    bool readBatch();
    // The last readBatch ended on a read error, not at the end.
    bool failed() const { return error != 0; }
    // The next name of the current run, "." and ".." left out; null when it is used up.
    const char* nextName();
    // The kind the folder gives for the last name (DT_DIR, DT_REG, ..., DT_UNKNOWN).
    unsigned char lastType() const { return type; }
    // The inode number the folder gives for the last name.
    quint64 lastInode() const { return inode; }

private:
    const int fd;
    char* const buffer;
    const size_t capacity;
    long filled = 0;
    long offset = 0;
    unsigned char type = 0;
    quint64 inode = 0;
    int error = 0;
};
