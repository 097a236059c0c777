#pragma once

#include <QByteArray>
#include <atomic>
#include <sys/types.h>
#include <vector>

// Copies one item (a file, a folder with everything in it, a symbolic link) to a new
// path beside it, for a worker thread. Everything it makes is created exclusively, so
// nothing that exists is ever replaced; links are copied as links, permissions and
// modification times are kept, holes stay holes, and blocks are shared (reflink) or
// copied inside the kernel where the file system can. A failed or cancelled copy
// removes exactly what it created.
class TreeCopy {
public:
    // 0, or the errno of the failure (ECANCELED after cancel()). EEXIST with nothing
    // created means the destination itself was taken.
    int run(const QByteArray& source, const QByteArray& destination);

    // From any thread: stop as soon as possible.
    void cancel() { stop = true; }
    // From any thread: bytes of file content copied so far.
    qint64 bytesDone() const { return done; }
    bool createdNothing() const { return created.empty(); }

private:
    struct Created {
        QByteArray path;
        dev_t device;
        ino_t inode;
        bool isDir;
    };

    int copyItem(const QByteArray& source, const QByteArray& destination);
    int copyFolder(const QByteArray& source, const QByteArray& destination,
                   const struct stat& info);
    int copyFile(const QByteArray& source, const QByteArray& destination, const struct stat& info);
    int copyContent(int in, int out, off_t size);
    int copyRange(int in, int out, off_t from, off_t to);
    void remember(const QByteArray& path, bool isDir);
    void removeCreated();

    std::atomic<bool> stop{false};
    std::atomic<qint64> done{0};
    std::vector<Created> created;
};
