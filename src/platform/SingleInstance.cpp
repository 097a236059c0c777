// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/SingleInstance.h"

#include "platform/ApplicationAdaptor.h"
#include "platform/LaunchArguments.h"
#include "platform/SessionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <optional>

const QString SingleInstance::serviceName = QStringLiteral("org.sizeloom.Sizeloom");
const QString SingleInstance::objectPath = QStringLiteral("/org/sizeloom/Sizeloom");

namespace {

const QString interfaceName = QStringLiteral("org.freedesktop.Application");
// A running program that does not answer within this time is taken as gone.
constexpr int forwardTimeoutMs = 10000;

// The launch's startup-notification token, which lets the running program's window
// take the focus on the launcher's behalf.
QVariantMap platformData() {
    QVariantMap data;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        data.insert(QStringLiteral("activation-token"), token);
    if (const QString id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        data.insert(QStringLiteral("desktop-startup-id"), id);
    return data;
}

void adoptToken(const QVariantMap& data) {
    const QString token = data.value(QStringLiteral("activation-token")).toString();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {
    new ApplicationAdaptor(this);
}

SingleInstance::~SingleInstance() {
    if (!registered)
        return;
    if (std::optional<QDBusConnection> bus = sessionBus()) {
        bus->unregisterService(serviceName);
        bus->unregisterObject(objectPath);
    }
}

bool SingleInstance::forwardIfRunning(const QList<QByteArray>& arguments) {
    std::optional<QDBusConnection> bus = sessionBus();
    if (!bus)
        return false;
    const QStringList uris = urisForArguments(arguments);
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName,
                                                       uris.isEmpty() ? QStringLiteral("Activate")
                                                                      : QStringLiteral("Open"));
    if (!uris.isEmpty())
        call << uris;
    call << platformData();
    // Nothing on this system starts the program for the bus: no owner means no program.
    call.setAutoStartService(false);
    return bus->call(call, QDBus::Block, forwardTimeoutMs).type() == QDBusMessage::ReplyMessage;
}

bool SingleInstance::registerPrimary() {
    if (registered)
        return true;
    std::optional<QDBusConnection> bus = sessionBus();
    if (!bus)
        return false;
    // The object first, so that whoever sees the name finds the interface behind it.
    if (!bus->registerObject(objectPath, this, QDBusConnection::ExportAdaptors))
        return false;
    if (bus->interface()->registerService(serviceName) !=
        QDBusConnectionInterface::ServiceRegistered) {
        bus->unregisterObject(objectPath);
        return false;
    }
    registered = true;
    return true;
}

void SingleInstance::activate(const QVariantMap& data) {
    adoptToken(data);
    Q_EMIT activationRequested();
}

void SingleInstance::open(const QStringList& uris, const QVariantMap& data) {
    QList<QUrl> urls;
    for (const QString& uri : uris) {
        const QUrl url(uri);
        if (url.isLocalFile() && !url.path().isEmpty())
            urls << url;
    }
    activate(data);
    if (!urls.isEmpty())
        Q_EMIT openRequested(urls);
}

void SingleInstance::refuseAction(const QString& name) {
    // The program declares no actions.
    sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("No such action: ") + name);
}
