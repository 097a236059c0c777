// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/ItemJobs.h"

#include "actions/ItemNaming.h"
#include "platform/PartialItems.h"
#include "platform/ProcessUmask.h"
#include "platform/RenameNoReplace.h"
#include "platform/Trash.h"
#include "platform/TreeCopy.h"
#include "platform/ZipArchive.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Names tried before giving up: enough for any folder a person keeps.
constexpr int kNamesTried = 10000;

Outcome<ReachedItem> reachAndSweep(const ItemLocation& location) {
    Outcome<ReachedItem> item = reachItem(location);
    if (item)
        sweepAbandonedPartials(item->folder.get());
    return item;
}

QByteArray parentPathOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

// Gives the partial item the first free name that `nameFor` makes; removes it when none
// can be had.
template <typename NameFor>
Outcome<QByteArray> publishUnderFreeName(int folder, const QByteArray& partial, NameFor&& nameFor) {
    for (int n = 1; n <= kNamesTried; ++n) {
        const QByteArray name = nameFor(n);
        const Done published = publishPartial(folder, partial, name);
        if (published)
            return name;
        if (published.error() != EEXIST) {
            removeItemTree(folder, partial);
            return Failure{published.error()};
        }
    }
    removeItemTree(folder, partial);
    return Failure{EEXIST};
}

// An unnamed file in the folder, linked in under a name only once complete; where the
// file system cannot make one, a locked partial file instead.
struct ArchiveFile {
    UniqueFd fd;
    QByteArray partialName; // empty for an unnamed file
};

Outcome<ArchiveFile> newArchiveFile(int folder, const QByteArray& firstName) {
    ArchiveFile file;
    file.fd = UniqueFd(openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (file.fd)
        return file;
    Outcome<PartialItem> partial = createPartialFile(folder, firstName);
    if (!partial)
        return Failure{partial.error()};
    file.fd = std::move(partial->fd);
    file.partialName = partial->name;
    return file;
}

// Links the unnamed file in under `name`; never replaces anything (EEXIST).
Done linkUnnamed(int fd, int folder, const QByteArray& name) {
    if (linkat(fd, "", folder, name.constData(), AT_EMPTY_PATH) == 0)
        return {};
    if (errno != ENOENT && errno != EPERM)
        return Failure{errno};
    // Without the privilege AT_EMPTY_PATH asks for, through the descriptor's magic link.
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(fd);
    return Done::fromError(
        linkat(AT_FDCWD, self.constData(), folder, name.constData(), AT_SYMLINK_FOLLOW) == 0
            ? 0
            : errno);
}

} // namespace

mode_t archiveMode(mode_t itemMode, mode_t umask) {
    return itemMode & 0666 & ~umask;
}

Outcome<QByteArray> duplicateItem(const ItemLocation& location, TreeCopy& copy) {
    const Outcome<ReachedItem> item = reachAndSweep(location);
    if (!item)
        return Failure{item.error()};
    const int folder = item->folder.get();
    const QByteArray& name = item->name;
    const auto nameFor = [&](int n) { return duplicateName(name, n); };
    const mode_t mode = item->st.st_mode;
    if (!S_ISDIR(mode) && !S_ISREG(mode)) {
        // A link or a special file is whole the moment it is made: made under its name.
        for (int n = 1; n <= kNamesTried; ++n) {
            const Done made = copy.copyOtherInto(folder, name, folder, nameFor(n), item->st);
            if (made)
                return nameFor(n);
            if (made.error() != EEXIST)
                return Failure{made.error()};
        }
        return Failure{EEXIST};
    }
    Outcome<PartialItem> partial = S_ISDIR(mode) ? createPartialFolder(folder, nameFor(1))
                                                 : createPartialFile(folder, nameFor(1));
    if (!partial)
        return Failure{partial.error()};
    Done copied;
    if (S_ISDIR(mode)) {
        const UniqueFd source(
            openat(folder, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        struct stat opened {};
        if (!source || fstat(source.get(), &opened) != 0)
            copied = Failure{errno};
        else if (opened.st_dev != item->st.st_dev || opened.st_ino != item->st.st_ino)
            copied = Failure{kItemChanged};
        else
            copied = copy.copyFolderInto(source.get(), partial->fd.get(), item->st);
    } else {
        const UniqueFd source(
            openat(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        copied = source ? copy.copyFileInto(source.get(), partial->fd.get(), item->st)
                        : Done(Failure{errno});
        if (copied && fdatasync(partial->fd.get()) != 0)
            copied = Failure{errno};
    }
    if (copied && copy.isCancelled())
        copied = Failure{ECANCELED};
    if (!copied) {
        removeItemTree(folder, partial->name);
        return Failure{copied.error()};
    }
    return publishUnderFreeName(folder, partial->name, nameFor);
}

Outcome<QByteArray> compressItem(const ItemLocation& location, const std::atomic<bool>& stop) {
    const Outcome<ReachedItem> item = reachAndSweep(location);
    if (!item)
        return Failure{item.error()};
    const int folder = item->folder.get();
    const auto nameFor = [&](int n) { return archiveName(item->name, n); };
    Outcome<ArchiveFile> archive = newArchiveFile(folder, nameFor(1));
    if (!archive)
        return Failure{archive.error()};
    const int fd = archive->fd.get();
    Done written = writeZipArchive(fd, folder, item->name, stop);
    if (written && fchmod(fd, archiveMode(item->st.st_mode, processUmask())) != 0)
        written = Failure{errno};
    if (written && stop)
        written = Failure{ECANCELED};
    if (!archive->partialName.isEmpty()) {
        if (!written) {
            removeItemTree(folder, archive->partialName);
            return Failure{written.error()};
        }
        return publishUnderFreeName(folder, archive->partialName, nameFor);
    }
    if (!written)
        return Failure{written.error()}; // the unnamed file goes with its descriptor
    for (int n = 1; n <= kNamesTried; ++n) {
        const Done linked = linkUnnamed(fd, folder, nameFor(n));
        if (linked)
            return nameFor(n);
        if (linked.error() != EEXIST)
            return Failure{linked.error()};
    }
    return Failure{EEXIST};
}

Outcome<QByteArray> renameItem(const ItemLocation& location, const QByteArray& newName) {
    const Outcome<ReachedItem> item = reachItem(location);
    if (!item)
        return Failure{item.error()};
    if (const Done renamed = renameNoReplaceAt(item->folder.get(), item->name, newName); !renamed)
        return Failure{renamed.error()};
    const QByteArray folder = parentPathOf(item->path);
    return folder.endsWith('/') ? folder + newName : folder + '/' + newName;
}

Outcome<QByteArray> trashItem(const ItemLocation& location) {
    const Outcome<ReachedItem> item = reachItem(location);
    if (!item)
        return Failure{item.error()};
    // The desktop's trash takes a path: handed over right after the check.
    if (!moveToTrash(item->path))
        return Failure{EIO};
    return item->path;
}
