// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ItemFacts.h"

#include "platform/Paths.h"
#include "platform/SafeRead.h"

#include <QMimeDatabase>
#include <QSet>
#include <fts.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Enough of a file's start for the MIME database's content rules.
constexpr qint64 kSniffBytes = 16 * 1024;

QDateTime timeOf(const timespec& when) {
    return QDateTime::fromMSecsSinceEpoch(qint64(when.tv_sec) * 1000 + when.tv_nsec / 1000000);
}

QString ownerName(uid_t uid) {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) == 0 && found)
        return QString::fromLocal8Bit(found->pw_name);
    return QString::number(uid);
}

QString groupName(gid_t gid) {
    std::vector<char> buffer(16384);
    group entry{};
    group* found = nullptr;
    if (getgrgid_r(gid, &entry, buffer.data(), buffer.size(), &found) == 0 && found)
        return QString::fromLocal8Bit(found->gr_name);
    return QString::number(gid);
}

QByteArray readLink(const QByteArray& path, qint64 size) {
    QByteArray target(qMax<qint64>(size, 255) + 1, Qt::Uninitialized);
    const ssize_t n = readlink(path.constData(), target.data(), size_t(target.size()));
    return n < 0 ? QByteArray() : target.left(n);
}

QString mimeTypeOf(const QByteArray& path, mode_t mode) {
    if (S_ISDIR(mode))
        return QStringLiteral("inode/directory");
    if (S_ISLNK(mode))
        return QStringLiteral("inode/symlink");
    if (S_ISFIFO(mode))
        return QStringLiteral("inode/fifo");
    if (S_ISSOCK(mode))
        return QStringLiteral("inode/socket");
    if (S_ISCHR(mode))
        return QStringLiteral("inode/chardevice");
    if (S_ISBLK(mode))
        return QStringLiteral("inode/blockdevice");
    const QByteArray start = readRegularFilePrefix(path, kSniffBytes).value_or(QByteArray());
    return QMimeDatabase()
        .mimeTypeForFileNameAndData(displayPath(lastPathComponent(path)), start)
        .name();
}

} // namespace

ItemFacts readItemFacts(const QByteArray& path) {
    ItemFacts facts;
    struct stat st {};
    if (lstat(path.constData(), &st) != 0)
        return facts;
    facts.found = true;
    facts.mode = st.st_mode;
    facts.allocatedBytes = qint64(st.st_blocks) * 512;
    facts.apparentBytes = st.st_size;
    facts.modified = timeOf(st.st_mtim);
    facts.changed = timeOf(st.st_ctim);
    facts.accessed = timeOf(st.st_atim);
    facts.owner = ownerName(st.st_uid);
    facts.group = groupName(st.st_gid);
    if (S_ISLNK(st.st_mode))
        facts.linkTarget = readLink(path, st.st_size);
    facts.mimeType = mimeTypeOf(path, st.st_mode);
    return facts;
}

QString permissionText(mode_t mode) {
    QString text(10, QLatin1Char('-'));
    if (S_ISDIR(mode))
        text[0] = QLatin1Char('d');
    else if (S_ISLNK(mode))
        text[0] = QLatin1Char('l');
    else if (S_ISFIFO(mode))
        text[0] = QLatin1Char('p');
    else if (S_ISSOCK(mode))
        text[0] = QLatin1Char('s');
    else if (S_ISCHR(mode))
        text[0] = QLatin1Char('c');
    else if (S_ISBLK(mode))
        text[0] = QLatin1Char('b');
    static const mode_t bits[9] = {S_IRUSR, S_IWUSR, S_IXUSR, S_IRGRP, S_IWGRP,
                                   S_IXGRP, S_IROTH, S_IWOTH, S_IXOTH};
    for (int i = 0; i < 9; ++i)
        if (mode & bits[i])
            text[i + 1] = QLatin1Char("rwx"[i % 3]);
    // A special bit shows in the execute place: lower case with execute, upper without.
    const auto special = [&](int at, mode_t bit, char withExecute) {
        if (mode & bit)
            text[at] =
                QLatin1Char(text[at] == QLatin1Char('-') ? char(withExecute - 32) : withExecute);
    };
    special(3, S_ISUID, 's');
    special(6, S_ISGID, 's');
    special(9, S_ISVTX, 't');
    return text;
}

std::optional<FolderTally> tallyFolder(const QByteArray& folder, const std::atomic<bool>& stop) {
    QByteArray root = folder;
    char* const roots[] = {root.data(), nullptr};
    FTS* walk = fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
    if (!walk)
        return std::nullopt;
    FolderTally tally;
    QSet<QPair<dev_t, ino_t>> linked;
    while (FTSENT* entry = fts_read(walk)) {
        if (stop.load(std::memory_order_relaxed)) {
            fts_close(walk);
            return std::nullopt;
        }
        if (entry->fts_info == FTS_DP)
            continue; // a folder's second visit, on the way back up
        if (entry->fts_level > 0)
            ++tally.items;
        const struct stat* st = entry->fts_statp;
        if (entry->fts_info == FTS_NS || entry->fts_info == FTS_ERR || !st) {
            if (entry->fts_level == 0) {
                fts_close(walk);
                return std::nullopt;
            }
            continue;
        }
        if (!S_ISDIR(st->st_mode) && st->st_nlink > 1) {
            const QPair<dev_t, ino_t> file{st->st_dev, st->st_ino};
            if (linked.contains(file))
                continue;
            linked.insert(file);
        }
        tally.allocatedBytes += qint64(st->st_blocks) * 512;
        tally.apparentBytes += st->st_size;
    }
    fts_close(walk);
    return tally;
}
