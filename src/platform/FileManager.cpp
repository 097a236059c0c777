// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FileManager.h"

#include "platform/FileUrl.h"
#include "platform/SessionBus.h"

namespace {

void callWithItem(const QString& method, const QByteArray& item, QObject* context,
                  std::function<void()> onFailure) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(FileManager::service, FileManager::path,
                                       QStringLiteral("org.freedesktop.FileManager1"), method);
    call << QStringList{fileUrlFromPathBytes(item).toString(QUrl::FullyEncoded)}
         << FileManager::startupId();
    callAsync(
        call, context, [](const QDBusMessage&) {}, [onFailure](const QDBusError&) { onFailure(); });
}

} // namespace

namespace FileManager {

void showItem(const QByteArray& item, QObject* context, std::function<void()> onFailure) {
    callWithItem(QStringLiteral("ShowItems"), item, context, std::move(onFailure));
}

void showItemProperties(const QByteArray& item, QObject* context, std::function<void()> onFailure) {
    callWithItem(QStringLiteral("ShowItemProperties"), item, context, std::move(onFailure));
}

QString startupId() {
    for (const char* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
        if (const QString token = qEnvironmentVariable(name); !token.isEmpty())
            return token;
    return {};
}

} // namespace FileManager
