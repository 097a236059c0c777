// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/TreeCopy.h"

#include "platform/DirectoryReader.h"
#include "platform/UniqueFd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr off_t kChunk = 8 << 20; // between two looks at the cancel flag
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

Failure lastError() {
    return {errno};
}

Done fromResult(int result) {
    return result == 0 ? Done() : Done(lastError());
}

bool kernelCopyUnsupported(int error) {
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP ||
           error == ENOTSUP;
}

// The mode and times of the source, set last on a folder: filling it changed its time.
Done finishFolder(int fd, const struct stat& info) {
    if (fchmod(fd, info.st_mode & 07777) != 0)
        return lastError();
    const timespec times[2] = {info.st_atim, info.st_mtim};
    return fromResult(futimens(fd, times));
}

std::vector<QByteArray> namesIn(int folder, int& error) {
    std::vector<QByteArray> names;
    UniqueFd readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable) {
        error = errno;
        return names;
    }
    std::array<char, 32 * 1024> buffer;
    DirectoryReader reader(readable.get(), buffer.data(), buffer.size());
    errno = 0;
    while (reader.readBatch())
        while (const char* name = reader.nextName())
            names.emplace_back(name);
    error = errno;
    return names;
}

} // namespace

Done TreeCopy::copyFolderInto(int from, int into, const struct stat& info) {
    // One level per open folder, with an explicit stack: a tree may be deeper than a
    // thread's stack would allow recursion.
    struct Level {
        UniqueFd from;
        UniqueFd into;
        struct stat info;
        QByteArray relative;
        std::vector<QByteArray> names;
        size_t next = 0;
    };
    std::vector<Level> levels;
    int error = 0;
    levels.push_back({UniqueFd(fcntl(from, F_DUPFD_CLOEXEC, 0)),
                      UniqueFd(fcntl(into, F_DUPFD_CLOEXEC, 0)),
                      info,
                      {},
                      namesIn(from, error)});
    if (error)
        return Failure{error};
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.names.size()) {
            if (const Done finished = finishFolder(level.into.get(), level.info); !finished)
                return finished;
            levels.pop_back();
            continue;
        }
        const QByteArray& name = level.names[level.next++];
        const QByteArray relative = level.relative.isEmpty() ? name : level.relative + '/' + name;
        bool entered = false;
        if (const Done copied =
                copyEntry(level.from.get(), name, level.into.get(), into, relative, entered);
            !copied)
            return copied;
        if (!entered)
            continue;
        Level below;
        below.from = UniqueFd(openat(level.from.get(), name.constData(), kFolderFlags));
        below.into = UniqueFd(openat(level.into.get(), name.constData(), kFolderFlags));
        if (!below.from || !below.into || fstat(below.from.get(), &below.info) != 0)
            return lastError();
        below.relative = relative;
        below.names = namesIn(below.from.get(), error);
        if (error)
            return Failure{error};
        levels.push_back(std::move(below));
    }
    return {};
}

Done TreeCopy::copyEntry(int from, const QByteArray& name, int into, int top,
                         const QByteArray& relative, bool& entered) {
    if (isCancelled())
        return Failure{ECANCELED};
    struct stat info {};
    if (fstatat(from, name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return lastError();
    if (S_ISDIR(info.st_mode)) {
        // Private while it fills, its own mode once complete.
        entered = mkdirat(into, name.constData(), 0700) == 0;
        return entered ? Done() : Done(lastError());
    }
    if (!S_ISREG(info.st_mode))
        return copyOtherInto(from, name, into, name, info);
    const auto linkKey = qMakePair(quint64(info.st_dev), quint64(info.st_ino));
    if (info.st_nlink > 1) {
        if (const auto first = linkedCopies.constFind(linkKey); first != linkedCopies.cend())
            return fromResult(linkat(top, first->constData(), into, name.constData(), 0));
    }
    // Non-blocking, so that should a pipe take the file's place it is not waited on.
    const UniqueFd in(
        openat(from, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!in)
        return lastError();
    UniqueFd out(
        openat(into, name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!out)
        return lastError();
    Done copied = copyFileInto(in.get(), out.get(), info);
    // A full disk or quota can show only at close (network file systems).
    if (close(out.release()) != 0 && copied)
        copied = lastError();
    if (copied && info.st_nlink > 1)
        linkedCopies.insert(linkKey, relative);
    return copied;
}

Done TreeCopy::copyFileInto(int in, int out, const struct stat& info) {
    struct stat opened {};
    if (fstat(in, &opened) != 0)
        return lastError();
    // Replaced by something else since it was looked at.
    if (!S_ISREG(opened.st_mode) || opened.st_dev != info.st_dev || opened.st_ino != info.st_ino)
        return Failure{EAGAIN};
    if (ioctl(out, FICLONE, in) == 0)
        done += opened.st_size; // the blocks are shared, nothing to copy
    else if (const Done copied = copyContent(in, out, opened.st_size); !copied)
        return copied;
    if (fchmod(out, info.st_mode & 07777) != 0)
        return lastError();
    const timespec times[2] = {info.st_atim, info.st_mtim};
    return fromResult(futimens(out, times));
}

Done TreeCopy::copyOtherInto(int from, const QByteArray& name, int into, const QByteArray& newName,
                             const struct stat& info) {
    if (S_ISLNK(info.st_mode)) {
        QByteArray target(qsizetype(info.st_size) + 1, Qt::Uninitialized);
        const ssize_t length =
            readlinkat(from, name.constData(), target.data(), size_t(target.size()));
        if (length < 0)
            return lastError();
        if (length >= target.size())
            return Failure{EAGAIN}; // the link changed while being read
        target.truncate(length);
        if (symlinkat(target.constData(), into, newName.constData()) != 0)
            return lastError();
    } else if (mknodat(into, newName.constData(), info.st_mode, info.st_rdev) != 0) {
        return lastError();
    }
    const timespec times[2] = {info.st_atim, info.st_mtim};
    return fromResult(utimensat(into, newName.constData(), times, AT_SYMLINK_NOFOLLOW));
}

Done TreeCopy::copyContent(int in, int out, off_t size) {
    off_t position = 0;
    while (position < size) {
        off_t data = lseek(in, position, SEEK_DATA);
        if (data < 0 && errno == ENXIO)
            break; // only a hole from here on
        off_t hole = data < 0 ? size : lseek(in, data, SEEK_HOLE);
        if (data < 0)
            data = position; // holes cannot be found here: copy everything
        if (hole < 0)
            hole = size;
        hole = std::min(hole, size);
        if (const Done copied = copyRange(in, out, data, hole); !copied)
            return copied;
        position = hole;
    }
    // The length, with any hole at the end.
    return fromResult(ftruncate(out, size));
}

Done TreeCopy::copyRange(int in, int out, off_t from, off_t to) {
    bool inKernel = true;
    std::vector<char> buffer;
    while (from < to) {
        if (isCancelled())
            return Failure{ECANCELED};
        const size_t length = size_t(std::min<off_t>(kChunk, to - from));
        ssize_t copied = -1;
        if (inKernel) {
            loff_t inAt = from, outAt = from;
            copied = copy_file_range(in, &inAt, out, &outAt, length, 0);
            if (copied < 0 && kernelCopyUnsupported(errno))
                inKernel = false;
        }
        if (!inKernel) {
            buffer.resize(std::min<size_t>(length, 1 << 20));
            copied = pread(in, buffer.data(), buffer.size(), from);
            for (ssize_t written = 0; copied > 0 && written < copied;) {
                const ssize_t n =
                    pwrite(out, buffer.data() + written, size_t(copied - written), from + written);
                if (n < 0)
                    return lastError();
                written += n;
            }
        }
        if (copied < 0) {
            if (errno == EINTR)
                continue;
            return lastError();
        }
        if (copied == 0)
            break; // the file got shorter meanwhile
        from += copied;
        done += copied;
    }
    return {};
}
