// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>

class QObject;

// The ways this machine can send an item to someone.
enum class ShareService {
    EmailPortal,  // the desktop portal's e-mail composer, the item attached
    EmailProgram, // xdg-email, the user's mail program with the item attached
    Bluetooth,    // bluetooth-sendto
};

// What decides which services are offered for an item.
struct ShareFacts {
    bool isFolder = false;
    bool emailPortal = false; // the portal's e-mail interface answers on the bus
    bool emailProgram = false;
    bool bluetoothProgram = false;
};

// The services to offer, in the picker's order: e-mail (through the portal when it is
// there, else through the mail program), then Bluetooth. None of them takes a folder.
QList<ShareService> shareServicesFor(const ShareFacts& facts);

// The facts this machine gives for an item; the portal is asked without waiting, and
// done runs later on the context's thread (not at all once the context is gone).
void probeShareFacts(bool isFolder, QObject* context, std::function<void(ShareFacts)> done);

// Hands the item to the service and returns without waiting for it; the service's
// outcome is not reported. False when the hand-off itself could not be made.
bool shareThrough(ShareService service, const QByteArray& path, QObject* context);

namespace EmailPortal {
inline const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
inline const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
inline const QString interface = QStringLiteral("org.freedesktop.portal.Email");
} // namespace EmailPortal
