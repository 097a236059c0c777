// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <functional>
#include <optional>

class QObject;

// The session bus, when this session has one. Without an address Qt would try to
// start a bus of its own; the caller then goes without.
std::optional<QDBusConnection> sessionBus();

// Sends the call and returns at once. Later, on the context's thread, exactly one of
// the two handlers runs: the reply or the error (also when there is no session bus).
// Nothing runs once the context is gone. A timeout of -1 is the bus's default.
void callAsync(const QDBusMessage& call, QObject* context,
               std::function<void(const QDBusMessage& reply)> onReply,
               std::function<void(const QDBusError& error)> onError, int timeoutMs = -1);
