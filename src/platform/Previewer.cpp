// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/Previewer.h"

#include "platform/FileUrl.h"
#include "platform/SessionBus.h"

namespace Previewer {

void showFile(const QByteArray& item, bool closeIfShown, QObject* context,
              std::function<void()> onFailure) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("ShowFile"));
    // No parent window handle: the previewer places its own window.
    call << fileUrlFromPathBytes(item).toString(QUrl::FullyEncoded) << 0 << closeIfShown;
    callAsync(
        call, context, [](const QDBusMessage&) {}, [onFailure](const QDBusError&) { onFailure(); });
}

} // namespace Previewer
