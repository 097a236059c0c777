// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/PartialItems.h"

#include "platform/DirectoryReader.h"
#include "platform/RenameNoReplace.h"

#include <QRandomGenerator>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <vector>

namespace {

const QByteArray kMark = ".sizeloom-partial-";
constexpr int kRandomLength = 6;

// Making a partial item and locking it are two steps: a sweep in between would take it
// for abandoned. Within this program the two never overlap.
std::mutex& partialsLock() {
    static std::mutex lock;
    return lock;
}

QByteArray randomSuffix() {
    static const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    QByteArray suffix(kRandomLength, Qt::Uninitialized);
    for (char& c : suffix)
        c = letters[QRandomGenerator::global()->bounded(int(sizeof letters) - 1)];
    return suffix;
}

// The final name cut to fit, on a character boundary.
QByteArray partialNameFor(const QByteArray& finalName) {
    const qsizetype room = NAME_MAX - 1 - kMark.size() - kRandomLength;
    qsizetype length = std::min(finalName.size(), room);
    // Not inside a UTF-8 sequence: continuation bytes are 10xxxxxx.
    while (length > 0 && length < finalName.size() && (uchar(finalName[length]) & 0xC0) == 0x80)
        --length;
    return '.' + finalName.left(length) + kMark + randomSuffix();
}

template <typename Create> Outcome<PartialItem> createLocked(Create&& create) {
    const std::lock_guard guard(partialsLock());
    for (int attempt = 0; attempt < 100; ++attempt) {
        PartialItem item;
        const int error = create(item);
        if (error == EEXIST)
            continue;
        if (error)
            return Failure{error};
        if (flock(item.fd.get(), LOCK_EX | LOCK_NB) != 0)
            return Failure{errno};
        return item;
    }
    return Failure{EEXIST};
}

} // namespace

bool isPartialName(const QByteArray& name) {
    const qsizetype mark = name.lastIndexOf(kMark);
    return name.startsWith('.') && mark > 0 && name.size() == mark + kMark.size() + kRandomLength;
}

Outcome<PartialItem> createPartialFolder(int folderFd, const QByteArray& finalName) {
    return createLocked([&](PartialItem& item) {
        item.name = partialNameFor(finalName);
        if (mkdirat(folderFd, item.name.constData(), 0700) != 0)
            return errno;
        item.fd = UniqueFd(openat(folderFd, item.name.constData(),
                                  O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!item.fd) {
            const int error = errno;
            unlinkat(folderFd, item.name.constData(), AT_REMOVEDIR);
            return error;
        }
        return 0;
    });
}

Outcome<PartialItem> createPartialFile(int folderFd, const QByteArray& finalName) {
    return createLocked([&](PartialItem& item) {
        item.name = partialNameFor(finalName);
        item.fd = UniqueFd(openat(folderFd, item.name.constData(),
                                  O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        return item.fd ? 0 : errno;
    });
}

Done publishPartial(int folderFd, const QByteArray& partialName, const QByteArray& finalName) {
    return renameNoReplaceAt(folderFd, partialName, finalName);
}

void removeItemTree(int folderFd, const QByteArray& name) {
    // Folders are emptied one level at a time, deepest first, with an explicit stack:
    // a copy may be as deep as the tree it was made from.
    struct Level {
        UniqueFd fd;
        QByteArray name;
        int parentFd;
        // Entered once each: one that cannot be emptied is left, not entered again.
        std::set<QByteArray> entered;
    };
    std::vector<Level> levels;
    const auto enter = [&](int parent, const QByteArray& entry) {
        UniqueFd fd(
            openat(parent, entry.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!fd)
            return false;
        // Our own folders may carry a read-only mode of their source.
        fchmod(fd.get(), 0700);
        levels.push_back({std::move(fd), entry, parent, {}});
        return true;
    };
    if (unlinkat(folderFd, name.constData(), 0) == 0 || !enter(folderFd, name))
        return;
    std::array<char, 32 * 1024> buffer;
    while (!levels.empty()) {
        Level& level = levels.back();
        // From the start again after a level below: what went is no longer listed.
        lseek(level.fd.get(), 0, SEEK_SET);
        DirectoryReader reader(level.fd.get(), buffer.data(), buffer.size());
        QByteArray below;
        while (below.isEmpty() && reader.readBatch())
            while (const char* entry = reader.nextName()) {
                if (unlinkat(level.fd.get(), entry, 0) == 0 || errno == ENOENT)
                    continue;
                if (level.entered.insert(QByteArray(entry)).second) {
                    below = entry;
                    break;
                }
            }
        if (!below.isEmpty() && enter(level.fd.get(), below))
            continue;
        if (!below.isEmpty())
            continue; // could not be opened: looked at no more
        const Level done = std::move(levels.back());
        levels.pop_back();
        unlinkat(done.parentFd, done.name.constData(), AT_REMOVEDIR);
    }
}

int sweepAbandonedPartials(int folderFd) {
    std::vector<QByteArray> candidates;
    {
        UniqueFd readable(openat(folderFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!readable)
            return 0;
        std::array<char, 32 * 1024> buffer;
        DirectoryReader reader(readable.get(), buffer.data(), buffer.size());
        while (reader.readBatch())
            while (const char* entry = reader.nextName())
                if (isPartialName(entry))
                    candidates.emplace_back(entry);
    }
    const std::lock_guard guard(partialsLock());
    int removed = 0;
    for (const QByteArray& name : candidates) {
        UniqueFd fd(openat(folderFd, name.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
        // Still locked: being made, here or by another copy of the program.
        if (!fd || flock(fd.get(), LOCK_EX | LOCK_NB) != 0)
            continue;
        struct stat opened {
        }, there{};
        if (fstat(fd.get(), &opened) != 0 ||
            fstatat(folderFd, name.constData(), &there, AT_SYMLINK_NOFOLLOW) != 0 ||
            opened.st_dev != there.st_dev || opened.st_ino != there.st_ino)
            continue;
        removeItemTree(folderFd, name);
        ++removed;
    }
    return removed;
}
