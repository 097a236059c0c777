// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/RenameNoReplace.h"

#include "platform/ItemReach.h"
#include "platform/UniqueFd.h"

#include <cerrno>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether the folder holds an entry of exactly these bytes (not one that a
// case-insensitive lookup merely matches).
bool listsExactly(int folderFd, const QByteArray& name) {
    return listedInode(folderFd, name) != 0;
}

// On a file system that ignores case, `to` can name the item itself ("photo.JPG" ->
// "photo.jpg"): nothing else can then be at `to`, and the plain rename is safe.
bool namesTheItemItself(int folderFd, const QByteArray& from, const QByteArray& to) {
    struct stat a {
    }, b{};
    if (fstatat(folderFd, from.constData(), &a, AT_SYMLINK_NOFOLLOW) != 0 ||
        fstatat(folderFd, to.constData(), &b, AT_SYMLINK_NOFOLLOW) != 0 || !sameFile(a, b))
        return false;
    // A second hard link of the same file is another entry, and it is taken.
    return !listsExactly(folderFd, to);
}

int errnoOf(int result) {
    return result == 0 ? 0 : errno;
}

int moveNoReplace(int folderFd, const QByteArray& from, const QByteArray& to);

// A change of case only. The kernel may take a rename onto the item's own other
// spelling as a rename onto itself and do nothing; then the item goes by a free
// temporary name, never replacing anything on either step.
int renameCaseOnly(int folderFd, const QByteArray& from, const QByteArray& to) {
    if (renameat(folderFd, from.constData(), folderFd, to.constData()) != 0)
        return errno;
    if (listsExactly(folderFd, to))
        return 0;
    for (int n = 0; n < 100; ++n) {
        const QByteArray between =
            ".sizeloom-rename-" + QByteArray::number(getpid()) + '-' + QByteArray::number(n);
        const int error = moveNoReplace(folderFd, from, between);
        if (error == EEXIST)
            continue;
        if (error)
            return error;
        const int second = moveNoReplace(folderFd, between, to);
        if (second)
            moveNoReplace(folderFd, between, from);
        return second;
    }
    return EEXIST;
}

// Reserves `to` with an empty item of our own, then lets rename replace exactly that
// item. Should anyone else fill the reservation meanwhile, a folder refuses to be
// replaced while not empty, and a file is checked to still be ours and empty.
int renameOntoReservation(int folderFd, const QByteArray& from, const QByteArray& to, bool isDir) {
    struct stat reserved {};
    if (isDir) {
        if (mkdirat(folderFd, to.constData(), 0700) != 0)
            return errno;
        if (fstatat(folderFd, to.constData(), &reserved, AT_SYMLINK_NOFOLLOW) != 0)
            return errno;
    } else {
        const UniqueFd fd(openat(folderFd, to.constData(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!fd)
            return errno;
        if (fstat(fd.get(), &reserved) != 0)
            return errno;
    }
    struct stat now {};
    int error = 0;
    if (fstatat(folderFd, to.constData(), &now, AT_SYMLINK_NOFOLLOW) != 0 ||
        !sameFile(now, reserved) || (!isDir && now.st_size != 0))
        error = EEXIST;
    else
        error = errnoOf(renameat(folderFd, from.constData(), folderFd, to.constData()));
    if (error) {
        // Take back the reservation, and only ours.
        if (fstatat(folderFd, to.constData(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
            sameFile(now, reserved))
            unlinkat(folderFd, to.constData(), isDir ? AT_REMOVEDIR : 0);
    }
    return error;
}

int moveByHand(int folderFd, const QByteArray& from, const QByteArray& to) {
    struct stat item {};
    if (fstatat(folderFd, from.constData(), &item, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    if (namesTheItemItself(folderFd, from, to))
        return renameCaseOnly(folderFd, from, to);
    if (!S_ISDIR(item.st_mode)) {
        // linkat() never replaces; the item then has both names until the old one goes.
        if (linkat(folderFd, from.constData(), folderFd, to.constData(), 0) == 0) {
            if (unlinkat(folderFd, from.constData(), 0) == 0)
                return 0;
            const int error = errno;
            unlinkat(folderFd, to.constData(), 0);
            return error;
        }
        const int error = errno;
        if (error != EPERM && error != EOPNOTSUPP && error != ENOSYS && error != EMLINK &&
            error != EXDEV)
            return error;
    }
    return renameOntoReservation(folderFd, from, to, S_ISDIR(item.st_mode));
}

int moveNoReplace(int folderFd, const QByteArray& from, const QByteArray& to) {
    if (renameat2(folderFd, from.constData(), folderFd, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    const int error = errno;
    if (error == EINVAL)
        return moveByHand(folderFd, from, to);
    if (error == EEXIST && namesTheItemItself(folderFd, from, to))
        return renameCaseOnly(folderFd, from, to);
    return error;
}

} // namespace

Done renameNoReplaceAt(int folderFd, const QByteArray& from, const QByteArray& to) {
    return Done::fromError(moveNoReplace(folderFd, from, to));
}

Done renameNoReplaceByHandAt(int folderFd, const QByteArray& from, const QByteArray& to) {
    return Done::fromError(moveByHand(folderFd, from, to));
}
