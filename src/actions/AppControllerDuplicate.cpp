// Duplicate: the copy runs on a worker under a modal progress dialog, beside the item,
// under its first free copy name.
#include "actions/CopyProgressDialog.h"
#include "actions/ErrorAlert.h"
#include "actions/ItemNaming.h"
#include "app/AppController.h"
#include "core/Node.h"
#include "platform/TreeCopy.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QTimer>
#include <cerrno>
#include <sys/stat.h>

namespace {

// Copies the item beside itself under the first free name. A name that appears
// between the look and the copy's exclusive creation is passed over.
int duplicateBeside(TreeCopy& copy, const QByteArray& source) {
    const QByteArray folder = deletingLastPathComponent(source);
    const QByteArray name = lastPathComponent(source);
    for (int n = 1;; ++n) {
        const QByteArray target = childPath(
            folder, firstFreeName([&](int k) { return duplicateName(name, k); },
                                  [&](const QByteArray& candidate) {
                                      struct stat info {};
                                      return lstat(childPath(folder, candidate).constData(),
                                                   &info) == 0;
                                  }));
        const int error = copy.run(source, target);
        if (error != EEXIST || !copy.createdNothing() || n > 1000)
            return error;
    }
}

} // namespace

void AppController::ctxDuplicate() {
    const NodePtr node = menuNode;
    if (!node)
        return;
    const QString title = t(QStringLiteral("ctx_duplicate"));
    CopyProgressDialog dialog(window, title, node->name());
    auto copy = std::make_shared<TreeCopy>();
    connect(&dialog, &CopyProgressDialog::cancelRequested, &dialog, [copy] { copy->cancel(); });
    QTimer progress;
    connect(&progress, &QTimer::timeout, &dialog,
            [&dialog, copy] { dialog.showBytesDone(copy->bytesDone()); });
    progress.start(100);

    auto result = std::make_shared<int>(0);
    QPointer<CopyProgressDialog> waiting(&dialog);
    // Ahead of queued measurements: the dialog is waiting for it.
    sizeQueue->start(
        [copy, result, waiting, source = node->url] {
            const int error = duplicateBeside(*copy, source);
            if (QCoreApplication* app = QCoreApplication::instance())
                QMetaObject::invokeMethod(
                    app,
                    [result, waiting, error] {
                        *result = error;
                        if (waiting)
                            waiting->finish();
                    },
                    Qt::QueuedConnection);
        },
        1);
    dialog.exec();
    progress.stop();

    if (*result == ECANCELED)
        return; // what the copy made is gone again
    if (*result) {
        showErrorAlert(window, title, node->name(), *result);
        return;
    }
    refreshParent(node);
}
