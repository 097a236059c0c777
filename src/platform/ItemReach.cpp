// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ItemReach.h"

#include "platform/DirectoryReader.h"

#include <QList>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

QByteArray folderOfPath(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray nameOfPath(const QByteArray& path) {
    return path.mid(path.lastIndexOf('/') + 1);
}

// Opens the folder at `relative` below `base`, no component a symbolic link and none
// leading out of base. One call where the kernel has openat2, else a step at a time.
UniqueFd openBeneath(int base, const QByteArray& relative) {
    if (relative.isEmpty())
        return UniqueFd(openat(base, ".", kFolderFlags));
    open_how how{};
    how.flags = kFolderFlags;
    how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS | RESOLVE_BENEATH;
    const long fd = syscall(SYS_openat2, base, relative.constData(), &how, sizeof how);
    if (fd >= 0 || (errno != ENOSYS && errno != EPERM))
        return UniqueFd(int(fd));
    UniqueFd folder(openat(base, ".", kFolderFlags));
    for (const QByteArray& part : relative.split('/')) {
        if (!folder)
            break;
        if (part.isEmpty() || part == "." || part == "..") {
            errno = ENOENT;
            return {};
        }
        folder = UniqueFd(openat(folder.get(), part.constData(), kFolderFlags | O_NOFOLLOW));
    }
    return folder;
}

bool isChange(int error) {
    return error == ENOENT || error == ELOOP || error == ENOTDIR || error == EXDEV ||
           error == ESTALE;
}

Failure failureOf(int error) {
    return {isChange(error) ? kItemChanged : error};
}

} // namespace

quint64 listedInode(int folderFd, const QByteArray& name) {
    UniqueFd readable(openat(folderFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable)
        return 0;
    std::array<char, 32 * 1024> buffer;
    DirectoryReader reader(readable.get(), buffer.data(), buffer.size());
    while (reader.readBatch())
        while (const char* entry = reader.nextName())
            if (name == entry)
                return reader.lastInode();
    return 0;
}

Outcome<ReachedItem> reachItem(const ItemLocation& location) {
    // The opened folder is taken where the path given leads, as it was walked.
    UniqueFd root(open(location.root.constData(), kFolderFlags));
    struct stat rootStat {};
    if (!root || fstat(root.get(), &rootStat) != 0)
        return failureOf(errno);
    if (FileId{rootStat.st_dev, rootStat.st_ino} != location.rootId)
        return Failure{kItemChanged};

    ReachedItem item;
    if (location.relative.isEmpty()) {
        // The opened folder itself: reached through its real path's folder.
        char* real = realpath(location.root.constData(), nullptr);
        if (!real)
            return failureOf(errno);
        item.path = QByteArray(real);
        free(real);
        if (item.path == "/")
            return Failure{EBUSY};
        item.folder = UniqueFd(open(folderOfPath(item.path).constData(), kFolderFlags));
        item.name = nameOfPath(item.path);
        if (!item.folder ||
            fstatat(item.folder.get(), item.name.constData(), &item.st, AT_SYMLINK_NOFOLLOW) != 0)
            return failureOf(errno);
        if (FileId{item.st.st_dev, item.st.st_ino} != location.rootId)
            return Failure{kItemChanged};
        return item;
    }

    const qsizetype slash = location.relative.lastIndexOf('/');
    item.folder = openBeneath(root.get(), slash < 0 ? QByteArray() : location.relative.left(slash));
    item.name = location.relative.mid(slash + 1);
    struct stat folderStat {};
    if (!item.folder || fstat(item.folder.get(), &folderStat) != 0 ||
        fstatat(item.folder.get(), item.name.constData(), &item.st, AT_SYMLINK_NOFOLLOW) != 0)
        return failureOf(errno);
    if (quint64(folderStat.st_dev) != location.folderDev)
        return Failure{kItemChanged};
    // The listing's inode is the stat's, except where another volume is mounted on the
    // entry (and on file systems that give other numbers in listings): then the
    // listing is asked again.
    const bool same = quint64(item.st.st_dev) == location.folderDev &&
                      quint64(item.st.st_ino) == location.listedIno;
    if (!same && listedInode(item.folder.get(), item.name) != location.listedIno)
        return Failure{kItemChanged};
    item.path = location.root.endsWith('/') ? location.root + location.relative
                                            : location.root + '/' + location.relative;
    return item;
}
