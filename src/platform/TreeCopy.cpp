#include "platform/TreeCopy.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off_t kChunk = 8 << 20; // between two looks at the cancel flag

int errnoOf(int result) {
    return result == 0 ? 0 : errno;
}

// The times of the source, set on what was made from it.
int keepTimes(int folderFd, const char* path, const struct stat& info, int flags) {
    const timespec times[2] = {info.st_atim, info.st_mtim};
    return errnoOf(utimensat(folderFd, path, times, flags));
}

bool kernelCopyUnsupported(int error) {
    return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP ||
           error == ENOTSUP;
}

} // namespace

int TreeCopy::run(const QByteArray& source, const QByteArray& destination) {
    const int error = copyItem(source, destination);
    if (error)
        removeCreated();
    return error;
}

void TreeCopy::remember(const QByteArray& path, bool isDir) {
    struct stat info {};
    if (lstat(path.constData(), &info) == 0)
        created.push_back({path, info.st_dev, info.st_ino, isDir});
}

int TreeCopy::copyItem(const QByteArray& source, const QByteArray& destination) {
    if (stop)
        return ECANCELED;
    struct stat info {};
    if (lstat(source.constData(), &info) != 0)
        return errno;
    if (S_ISDIR(info.st_mode))
        return copyFolder(source, destination, info);
    if (S_ISREG(info.st_mode))
        return copyFile(source, destination, info);
    if (S_ISLNK(info.st_mode)) {
        QByteArray target(qsizetype(info.st_size) + 1, Qt::Uninitialized);
        const ssize_t length = readlink(source.constData(), target.data(), size_t(target.size()));
        if (length < 0)
            return errno;
        if (length >= target.size())
            return EAGAIN; // the link changed while being read
        target.truncate(length);
        if (symlink(target.constData(), destination.constData()) != 0)
            return errno;
        remember(destination, false);
        return keepTimes(AT_FDCWD, destination.constData(), info, AT_SYMLINK_NOFOLLOW);
    }
    // A pipe, socket or device node: made anew, never opened.
    if (mknod(destination.constData(), info.st_mode, info.st_rdev) != 0)
        return errno;
    remember(destination, false);
    return keepTimes(AT_FDCWD, destination.constData(), info, 0);
}

int TreeCopy::copyFolder(const QByteArray& source, const QByteArray& destination,
                         const struct stat& info) {
    // Private while it fills, its own mode once complete.
    if (mkdir(destination.constData(), 0700) != 0)
        return errno;
    remember(destination, true);
    DIR* dir = opendir(source.constData());
    if (!dir)
        return errno;
    std::vector<QByteArray> names;
    errno = 0;
    while (const dirent* entry = readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.push_back(name);
    }
    const int listError = errno;
    closedir(dir);
    if (listError)
        return listError;
    for (const QByteArray& name : names)
        if (const int error = copyItem(source + '/' + name, destination + '/' + name))
            return error;
    if (chmod(destination.constData(), info.st_mode & 07777) != 0)
        return errno;
    // Last, as filling the folder changed its time.
    return keepTimes(AT_FDCWD, destination.constData(), info, AT_SYMLINK_NOFOLLOW);
}

int TreeCopy::copyFile(const QByteArray& source, const QByteArray& destination,
                       const struct stat& info) {
    // Non-blocking, so that should a pipe take the file's place it is not waited on.
    const int in = open(source.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (in < 0)
        return errno;
    struct stat opened {};
    const int statError = errnoOf(fstat(in, &opened));
    if (statError || !S_ISREG(opened.st_mode)) {
        close(in);
        return statError ? statError : EAGAIN; // replaced by something else meanwhile
    }
    const int out =
        open(destination.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (out < 0) {
        const int error = errno;
        close(in);
        return error;
    }
    remember(destination, false);
    int error = 0;
    if (ioctl(out, FICLONE, in) == 0)
        done += opened.st_size; // the blocks are shared, nothing to copy
    else
        error = copyContent(in, out, opened.st_size);
    if (!error)
        error = errnoOf(fchmod(out, info.st_mode & 07777));
    if (!error) {
        const timespec times[2] = {info.st_atim, info.st_mtim};
        error = errnoOf(futimens(out, times));
    }
    // A full disk or quota can show only at close (network file systems).
    if (close(out) != 0 && !error)
        error = errno;
    close(in);
    return error;
}

int TreeCopy::copyContent(int in, int out, off_t size) {
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
        if (const int error = copyRange(in, out, data, hole))
            return error;
        position = hole;
    }
    // The length, with any hole at the end.
    return errnoOf(ftruncate(out, size));
}

int TreeCopy::copyRange(int in, int out, off_t from, off_t to) {
    bool inKernel = true;
    std::vector<char> buffer;
    while (from < to) {
        if (stop)
            return ECANCELED;
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
            if (copied > 0) {
                for (ssize_t written = 0; written < copied;) {
                    const ssize_t n = pwrite(out, buffer.data() + written, size_t(copied - written),
                                             from + written);
                    if (n < 0)
                        return errno;
                    written += n;
                }
            }
        }
        if (copied < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (copied == 0)
            break; // the file got shorter meanwhile
        from += copied;
        done += copied;
    }
    return 0;
}

void TreeCopy::removeCreated() {
    const auto stillOurs = [](const Created& item) {
        struct stat info {};
        return lstat(item.path.constData(), &info) == 0 && info.st_dev == item.device &&
               info.st_ino == item.inode;
    };
    // Our folders may already carry a read-only mode of their source.
    for (const Created& item : created)
        if (item.isDir && stillOurs(item))
            chmod(item.path.constData(), 0700);
    for (auto item = created.rbegin(); item != created.rend(); ++item)
        if (stillOurs(*item))
            item->isDir ? rmdir(item->path.constData()) : unlink(item->path.constData());
    created.clear();
}
