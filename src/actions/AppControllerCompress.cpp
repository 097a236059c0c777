// Compress: a zip archive beside the item, its name reserved at the request, written on
// a worker; the status line tells the start and the end.
#include "actions/ItemNaming.h"
#include "app/AppController.h"
#include "core/Node.h"
#include "platform/ZipArchive.h"

#include <QCoreApplication>
#include <QLabel>
#include <cerrno>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// One archive being made: the reserved file, open, and who may still remove it. A job
// that never runs (its queue was cleared at quit) removes its reservation when
// dropped; a running one is stopped and waited for when the controller goes, so a
// half-written archive never outlives the program.
class CompressJob {
public:
    CompressJob(int fd, QByteArray path) : fd(fd), path(std::move(path)) {}
    ~CompressJob() {
        if (state == Queued)
            removeArchive();
        close(fd);
    }

    const int fd;
    const QByteArray path;
    std::atomic<bool> stop{false};

    // The worker starts; false when the program has already given the job up.
    bool begin() {
        std::lock_guard lock(mutex);
        if (state != Queued)
            return false;
        state = Running;
        return true;
    }
    void end() {
        std::lock_guard lock(mutex);
        state = Ended;
        ended.notify_all();
    }
    // The controller is going: stop the job, and wait until it has cleaned up.
    void abandon() {
        stop = true;
        std::unique_lock lock(mutex);
        if (state == Queued) {
            state = Ended;
            removeArchive();
            return;
        }
        ended.wait(lock, [this] { return state == Ended; });
    }
    // Removes the archive file, provided it is still the one reserved.
    void removeArchive() const {
        struct stat ours {
        }, there{};
        if (fstat(fd, &ours) == 0 && lstat(path.constData(), &there) == 0 &&
            ours.st_dev == there.st_dev && ours.st_ino == there.st_ino)
            unlink(path.constData());
    }

private:
    enum State { Queued, Running, Ended };
    std::mutex mutex;
    std::condition_variable ended;
    State state = Queued;
};

} // namespace

void AppController::ctxCompress() {
    const NodePtr node = menuNode;
    if (!node)
        return;
    const QByteArray folder = deletingLastPathComponent(node->url);
    // The name is taken on disk at once, so a second request never gets the same one:
    // a name counts as taken unless the archive could be created under it.
    int fd = -1;
    const QByteArray name =
        firstFreeName([&](int n) { return archiveName(lastPathComponent(node->url), n); },
                      [&](const QByteArray& candidate) {
                          fd = open(childPath(folder, candidate).constData(),
                                    O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
                          return fd < 0 && errno == EEXIST;
                      });
    if (fd < 0) {
        if (status)
            status->setText(t(QStringLiteral("compress_failed")) + node->name());
        return;
    }
    if (status)
        status->setText(t(QStringLiteral("compressing")) + node->name());

    auto job = std::make_shared<CompressJob>(fd, childPath(folder, name));
    connect(this, &QObject::destroyed, QCoreApplication::instance(),
            [weak = std::weak_ptr<CompressJob>(job)] {
                if (const auto job = weak.lock())
                    job->abandon();
            });
    QPointer<AppController> self(this);
    sizeQueue->start(
        [self, node, job, name] {
            if (!job->begin())
                return;
            const int error = writeZipArchive(job->fd, node->url, job->stop);
            if (error)
                job->removeArchive();
            job->end();
            if (QCoreApplication* app = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    app,
                    [self, node, name, error] {
                        if (!self)
                            return;
                        if (self->status)
                            self->status->setText(
                                error ? t(QStringLiteral("compress_failed")) + node->name()
                                      : t(QStringLiteral("compressed")) + displayPath(name));
                        self->refreshParent(node);
                    },
                    Qt::QueuedConnection);
        },
        1);
}
