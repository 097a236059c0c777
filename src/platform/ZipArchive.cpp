#include "platform/ZipArchive.h"

#include <QString>
#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <dirent.h>
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

    int add(const QByteArray& path, const QByteArray& name) {
        if (!opened)
            return failure();
        if (stop)
            return ECANCELED;
        struct stat info {};
        if (lstat(path.constData(), &info) != 0)
            return errno;
        if (S_ISDIR(info.st_mode))
            return addFolder(path, name, info);
        if (S_ISREG(info.st_mode))
            return addFile(path, name);
        if (S_ISLNK(info.st_mode))
            return addLink(path, name, info);
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

    int addFolder(const QByteArray& path, const QByteArray& name, const struct stat& info) {
        Entry entry = entryFor(name, info);
        if (const int error = writeHeader(name, entry.get()))
            return error;
        DIR* dir = opendir(path.constData());
        if (!dir)
            return errno;
        std::vector<QByteArray> names;
        errno = 0;
        while (const dirent* child = readdir(dir)) {
            const QByteArray childName(child->d_name);
            if (childName != "." && childName != "..")
                names.push_back(childName);
        }
        const int listError = errno;
        closedir(dir);
        if (listError)
            return listError;
        for (const QByteArray& child : names)
            if (const int error = add(path + '/' + child, name + '/' + child))
                return error;
        return 0;
    }

    int addLink(const QByteArray& path, const QByteArray& name, const struct stat& info) {
        QByteArray target(qsizetype(info.st_size) + 1, Qt::Uninitialized);
        const ssize_t length = readlink(path.constData(), target.data(), size_t(target.size()));
        if (length < 0)
            return errno;
        if (length >= target.size())
            return EAGAIN; // the link changed while being read
        target.truncate(length);
        Entry entry = entryFor(name, info);
        archive_entry_copy_symlink(entry.get(), target.constData());
        return writeHeader(name, entry.get());
    }

    int addFile(const QByteArray& path, const QByteArray& name) {
        // Non-blocking, so that should a pipe take the file's place it is not waited on.
        const int fd = open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0)
            return errno;
        struct stat opened {};
        int error = fstat(fd, &opened) == 0 ? 0 : errno;
        if (!error && !S_ISREG(opened.st_mode))
            error = EAGAIN;
        if (!error) {
            Entry entry = entryFor(name, opened);
            error = writeHeader(name, entry.get());
        }
        // Exactly the size announced in the header, even if the file changes meanwhile.
        std::vector<char> buffer(1 << 20);
        for (off_t left = opened.st_size; !error && left > 0;) {
            if (stop) {
                error = ECANCELED;
                break;
            }
            const ssize_t got =
                read(fd, buffer.data(), size_t(std::min<off_t>(left, off_t(buffer.size()))));
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
        close(fd);
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

int writeZipArchive(int fd, const QByteArray& itemPath, const std::atomic<bool>& stop) {
    QByteArray name = itemPath;
    while (name.size() > 1 && name.endsWith('/'))
        name.chop(1);
    name = name.mid(name.lastIndexOf('/') + 1);
    ZipWriter writer(fd, stop);
    if (const int error = writer.add(itemPath, name))
        return error;
    if (const int error = writer.finish())
        return error;
    return fsync(fd) == 0 ? 0 : errno;
}
