// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ShareServices.h"

#include "platform/DetachedProcess.h"
#include "platform/SessionBus.h"

#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A portal that is not running is started by the bus on this first call; one that
// does not answer within this time is taken as absent.
constexpr int kProbeTimeoutMs = 3000;

bool composeWithPortal(const QByteArray& path, QObject* context) {
    // The portal wants a descriptor of the file, not its name. O_PATH opens nothing
    // (no FIFO can block here) and the portal reaches the file through it.
    const int fd = open(path.constData(), O_PATH | O_CLOEXEC);
    if (fd < 0)
        return false;
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    const QList<QDBusUnixFileDescriptor> attachments{QDBusUnixFileDescriptor(fd)};
    close(fd);
    QDBusMessage call =
        QDBusMessage::createMethodCall(EmailPortal::service, EmailPortal::path,
                                       EmailPortal::interface, QStringLiteral("ComposeEmail"));
    call << QString()
         << QVariantMap{{QStringLiteral("attachment_fds"), QVariant::fromValue(attachments)}};
    callAsync(
        call, context, [](const QDBusMessage&) {}, [](const QDBusError&) {});
    return true;
}

} // namespace

QList<ShareService> shareServicesFor(const ShareFacts& facts) {
    if (facts.isFolder)
        return {};
    QList<ShareService> services;
    if (facts.emailPortal)
        services << ShareService::EmailPortal;
    else if (facts.emailProgram)
        services << ShareService::EmailProgram;
    if (facts.bluetoothProgram)
        services << ShareService::Bluetooth;
    return services;
}

void probeShareFacts(bool isFolder, QObject* context, std::function<void(ShareFacts)> done) {
    ShareFacts facts;
    facts.isFolder = isFolder;
    facts.emailProgram = !findProgram("xdg-email").isEmpty();
    facts.bluetoothProgram = !findProgram("bluetooth-sendto").isEmpty();
    if (isFolder) {
        // Nothing takes a folder; the portal need not be asked.
        QMetaObject::invokeMethod(
            context, [facts, done] { done(facts); }, Qt::QueuedConnection);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        EmailPortal::service, EmailPortal::path, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    call << EmailPortal::interface << QStringLiteral("version");
    callAsync(
        call, context,
        [facts, done](const QDBusMessage&) mutable {
            facts.emailPortal = true;
            done(facts);
        },
        [facts, done](const QDBusError&) { done(facts); }, kProbeTimeoutMs);
}

bool shareThrough(ShareService service, const QByteArray& path, QObject* context) {
    switch (service) {
    case ShareService::EmailPortal:
        return composeWithPortal(path, context);
    case ShareService::EmailProgram:
        // xdg-email takes no "--"; the path is absolute, so it never reads as an option.
        return startDetached("xdg-email", {"--attach", path});
    case ShareService::Bluetooth:
        return startDetached("bluetooth-sendto", {"--", path});
    }
    return false;
}
