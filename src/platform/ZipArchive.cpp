// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ZipArchive.h"

#include "platform/DirectoryReader.h"
#include "platform/UniqueFd.h"

#include <QString>
#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <locale.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

bool isUtf8(const QByteArray& bytes) {
    return QString::fromUtf8(bytes).toUtf8() == bytes;
}

// libarchive marks a name as UTF-8 when the thread's character set is UTF-8; a name
// that is not UTF-8 must go unmarked, as the bytes it is, so each entry is written
// under the character set that tells the truth about its name.
class NameCharset {
public:
    NameCharset()
        : utf8(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)),
          bytes(newlocale(LC_CTYPE_MASK, "C", nullptr)), previous(uselocale(locale_t(nullptr))) {}
    ~NameCharset() {
        uselocale(previous);
        if (utf8)
            freelocale(utf8);
        if (bytes)
            freelocale(bytes);
    }
    void useFor(const QByteArray& name) {
        if (const locale_t chosen = isUtf8(name) ? utf8 : bytes)
            uselocale(chosen);
    }

private:
    locale_t utf8;
    locale_t bytes;
    locale_t previous;
};

// The folders being archived, one open level each: a tree may be deeper than a
// thread's stack would allow recursion.
struct Level {
    UniqueFd fd;
    QByteArray zipName;
    std::vector<QByteArray> names;
    size_t next = 0;
};

class ZipWriter {
public:
    ZipWriter(int fd, const std::atomic<bool>& stop) : stop(stop), zip(archive_write_new()) {
        archive_write_set_format_zip(zip);
        archive_write_zip_set_compression_deflate(zip);
        // No padding after the end of the archive.
        archive_write_set_bytes_in_last_block(zip, 1);
        opened = archive_write_open_fd(zip, fd) == ARCHIVE_OK;
    }
    ~ZipWriter() { archive_write_free(zip); }

    int addTree(int folder, const QByteArray& name) {
        if (!opened)
            return failure();
        std::vector<Level> levels;
        if (const int error = add(folder, name, name, levels))
            return error;
        while (!levels.empty()) {
            Level& level = levels.back();
            if (level.next == level.names.size()) {
                levels.pop_back();
                continue;
            }
            const QByteArray child = level.names[level.next++];
            if (const int error = add(level.fd.get(), child, level.zipName + '/' + child, levels))
                return error;
        }
        return 0;
    }

    int finish() {
        if (archive_write_close(zip) != ARCHIVE_OK)
            return failure();
        return 0;
    }

private:
    using Entry = std::unique_ptr<archive_entry, decltype(&archive_entry_free)>;

    Entry entryFor(const QByteArray& name, const struct stat& info) {
        Entry entry(archive_entry_new(), &archive_entry_free);
        archive_entry_copy_stat(entry.get(), &info);
        archive_entry_copy_pathname(entry.get(), name.constData());
        return entry;
    }

    int writeHeader(const QByteArray& name, archive_entry* entry) {
        charset.useFor(name);
        return archive_write_header(zip, entry) < ARCHIVE_WARN ? failure() : 0;
    }

    // Writes the entry; a folder is opened and pushed, for its entries to follow.
    int add(int folder, const QByteArray& name, const QByteArray& zipName,
            std::vector<Level>& levels) {
        if (stop)
            return ECANCELED;
        struct stat info {};
        if (fstatat(folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            return errno;
        if (S_ISDIR(info.st_mode))
            return addFolder(folder, name, zipName, info, levels);
        if (S_ISREG(info.st_mode))
            return addFile(folder, name, zipName);
        if (S_ISLNK(info.st_mode))
            return addLink(folder, name, zipName, info);
        return 0;
    }

    int addFolder(int folder, const QByteArray& name, const QByteArray& zipName,
                  const struct stat& info, std::vector<Level>& levels) {
        UniqueFd fd(
            openat(folder, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!fd)
            return errno;
        Entry entry = entryFor(zipName, info);
        if (const int error = writeHeader(zipName, entry.get()))
            return error;
        Level level{std::move(fd), zipName, {}};
        UniqueFd readable(openat(level.fd.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!readable)
            return errno;
        std::array<char, 32 * 1024> buffer;
        DirectoryReader reader(readable.get(), buffer.data(), buffer.size());
        errno = 0;
        while (reader.readBatch())
            while (const char* child = reader.nextName())
                level.names.emplace_back(child);
        if (errno)
            return errno;
        levels.push_back(std::move(level));
        return 0;
    }

    int addLink(int folder, const QByteArray& name, const QByteArray& zipName,
                const struct stat& info) {
        QByteArray target(qsizetype(info.st_size) + 1, Qt::Uninitialized);
        const ssize_t length =
            readlinkat(folder, name.constData(), target.data(), size_t(target.size()));
        if (length < 0)
            return errno;
        if (length >= target.size())
            return EAGAIN; // the link changed while being read
        target.truncate(length);
        Entry entry = entryFor(zipName, info);
        archive_entry_copy_symlink(entry.get(), target.constData());
        return writeHeader(zipName, entry.get());
    }

    int addFile(int folder, const QByteArray& name, const QByteArray& zipName) {
        // Non-blocking, so that should a pipe take the file's place it is not waited on.
        const UniqueFd fd(
            openat(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!fd)
            return errno;
        struct stat opened {};
        int error = fstat(fd.get(), &opened) == 0 ? 0 : errno;
        if (!error && !S_ISREG(opened.st_mode))
            error = EAGAIN;
        if (!error) {
            Entry entry = entryFor(zipName, opened);
            error = writeHeader(zipName, entry.get());
        }
        // Exactly the size announced in the header, even if the file changes meanwhile.
        std::vector<char> buffer(1 << 20);
        for (off_t left = opened.st_size; !error && left > 0;) {
            if (stop) {
                error = ECANCELED;
                break;
            }
            const ssize_t got =
                read(fd.get(), buffer.data(), size_t(std::min<off_t>(left, off_t(buffer.size()))));
            if (got < 0) {
                if (errno != EINTR)
                    error = errno;
                continue;
            }
            if (got == 0) {
                error = EAGAIN; // the file got shorter meanwhile
                break;
            }
            if (archive_write_data(zip, buffer.data(), size_t(got)) != got)
                error = failure();
            left -= got;
        }
        return error;
    }

    // libarchive's errno for its last failure, or EIO where it gives none.
    int failure() {
        const int error = archive_errno(zip);
        return error > 0 ? error : EIO;
    }

    const std::atomic<bool>& stop;
    struct archive* const zip;
    NameCharset charset;
    bool opened = false;
};

} // namespace

Done writeZipArchive(int outFd, int folderFd, const QByteArray& name,
                     const std::atomic<bool>& stop) {
    ZipWriter writer(outFd, stop);
    if (const int error = writer.addTree(folderFd, name))
        return Failure{error};
    if (const int error = writer.finish())
        return Failure{error};
    return Done::fromError(fsync(outFd) == 0 ? 0 : errno);
}
