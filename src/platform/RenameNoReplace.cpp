#include "platform/RenameNoReplace.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : path.left(slash);
}

QByteArray nameOf(const QByteArray& path) {
    return path.mid(path.lastIndexOf('/') + 1);
}

// Whether the folder holds an entry of exactly these bytes (not one that a
// case-insensitive lookup merely matches).
bool listsExactly(const QByteArray& folder, const QByteArray& name) {
    DIR* dir = opendir(folder.constData());
    if (!dir)
        return true; // cannot tell: assume taken
    bool found = false;
    while (const dirent* entry = readdir(dir))
        if (name == entry->d_name) {
            found = true;
            break;
        }
    closedir(dir);
    return found;
}

// On a file system that ignores case, `to` can name the item itself ("photo.JPG" ->
// "photo.jpg"): nothing else can then be at `to`, and the plain rename is safe.
bool namesTheItemItself(const QByteArray& from, const QByteArray& to) {
    struct stat a {
    }, b{};
    if (lstat(from.constData(), &a) != 0 || lstat(to.constData(), &b) != 0 || !sameFile(a, b))
        return false;
    // A second hard link of the same file is another entry, and it is taken.
    return !listsExactly(folderOf(to), nameOf(to));
}

int errnoOf(int result) {
    return result == 0 ? 0 : errno;
}

// A change of case only. The kernel may take a rename onto the item's own other
// spelling as a rename onto itself and do nothing; then the item goes by a free
// temporary name, never replacing anything on either step.
int renameCaseOnly(const QByteArray& from, const QByteArray& to) {
    if (rename(from.constData(), to.constData()) != 0)
        return errno;
    if (listsExactly(folderOf(to), nameOf(to)))
        return 0;
    for (int n = 0; n < 100; ++n) {
        const QByteArray between = folderOf(to) + "/.sizeloom-rename-" +
                                   QByteArray::number(getpid()) + '-' + QByteArray::number(n);
        const int error = renameNoReplace(from, between);
        if (error == EEXIST)
            continue;
        if (error)
            return error;
        const int second = renameNoReplace(between, to);
        if (second)
            renameNoReplace(between, from);
        return second;
    }
    return EEXIST;
}

// Reserves `to` with an empty item of our own, then lets rename replace exactly that
// item. Should anyone else fill the reservation meanwhile, a folder refuses to be
// replaced while not empty, and a file is checked to still be ours and empty.
int renameOntoReservation(const QByteArray& from, const QByteArray& to, bool isDir) {
    struct stat reserved {};
    if (isDir) {
        if (mkdir(to.constData(), 0700) != 0)
            return errno;
        if (lstat(to.constData(), &reserved) != 0)
            return errno;
    } else {
        const int fd = open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0)
            return errno;
        const int statError = errnoOf(fstat(fd, &reserved));
        close(fd);
        if (statError)
            return statError;
    }
    struct stat now {};
    int error = 0;
    if (lstat(to.constData(), &now) != 0 || !sameFile(now, reserved) ||
        (!isDir && now.st_size != 0))
        error = EEXIST;
    else
        error = errnoOf(rename(from.constData(), to.constData()));
    if (error) {
        // Take back the reservation, and only ours.
        if (lstat(to.constData(), &now) == 0 && sameFile(now, reserved))
            isDir ? rmdir(to.constData()) : unlink(to.constData());
    }
    return error;
}

} // namespace

int renameNoReplace(const QByteArray& from, const QByteArray& to) {
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    const int error = errno;
    if (error == EINVAL)
        return renameNoReplaceByHand(from, to);
    if (error == EEXIST && namesTheItemItself(from, to))
        return renameCaseOnly(from, to);
    return error;
}

int renameNoReplaceByHand(const QByteArray& from, const QByteArray& to) {
    struct stat item {};
    if (lstat(from.constData(), &item) != 0)
        return errno;
    if (namesTheItemItself(from, to))
        return renameCaseOnly(from, to);
    if (!S_ISDIR(item.st_mode)) {
        // link() never replaces; the item then has both names until the old one goes.
        if (link(from.constData(), to.constData()) == 0) {
            if (unlink(from.constData()) == 0)
                return 0;
            const int error = errno;
            unlink(to.constData());
            return error;
        }
        const int error = errno;
        if (error != EPERM && error != EOPNOTSUPP && error != ENOSYS && error != EMLINK &&
            error != EXDEV)
            return error;
    }
    return renameOntoReservation(from, to, S_ISDIR(item.st_mode));
}
