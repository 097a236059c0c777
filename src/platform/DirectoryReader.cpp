// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/DirectoryReader.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct LinuxDirent64 {
    uint64_t d_ino;
    int64_t d_off;
    unsigned short d_reclen;
    unsigned char d_type;
    char d_name[1];
};

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

} // namespace

namespace {
std::atomic<quint64> readersMade{0};
} // namespace

DirectoryReader::DirectoryReader(int fd, char* buffer, size_t capacity)
    : fd(fd), buffer(buffer), capacity(capacity) {
    readersMade.fetch_add(1, std::memory_order_relaxed);
}

quint64 DirectoryReader::foldersRead() {
    return readersMade.load(std::memory_order_relaxed);
}

bool DirectoryReader::readBatch() {
    long n = 0;
    do
        n = syscall(SYS_getdents64, fd, buffer, capacity);
    while (n < 0 && errno == EINTR);
    filled = n > 0 ? n : 0;
    error = n < 0 ? errno : 0;
    offset = 0;
    return n > 0;
}

const char* DirectoryReader::nextName() {
    while (offset < filled) {
        const auto* entry = reinterpret_cast<const LinuxDirent64*>(buffer + offset);
        offset += entry->d_reclen;
        if (!isDotOrDotDot(entry->d_name)) {
            type = entry->d_type;
            inode = entry->d_ino;
            return entry->d_name;
        }
    }
    return nullptr;
}
