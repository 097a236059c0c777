// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/SessionBus.h"

#include <QDBusPendingCallWatcher>
#include <QMetaObject>

std::optional<QDBusConnection> sessionBus() {
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return std::nullopt;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return std::nullopt;
    return bus;
}

void callAsync(const QDBusMessage& call, QObject* context,
               std::function<void(const QDBusMessage& reply)> onReply,
               std::function<void(const QDBusError& error)> onError, int timeoutMs) {
    const std::optional<QDBusConnection> bus = sessionBus();
    if (!bus) {
        QMetaObject::invokeMethod(
            context,
            [onError] {
                onError(QDBusError(QDBusError::Disconnected, QStringLiteral("no session bus")));
            },
            Qt::QueuedConnection);
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(bus->asyncCall(call, timeoutMs), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [onReply, onError](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         if (finished->isError())
                             onError(finished->error());
                         else
                             onReply(finished->reply());
                     });
}
