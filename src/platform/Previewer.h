// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

class QObject;

// The desktop's file previewer (org.gnome.NautilusPreviewer on the session bus).
namespace Previewer {

inline const QString service = QStringLiteral("org.gnome.NautilusPreviewer");
inline const QString path = QStringLiteral("/org/gnome/NautilusPreviewer");

// Asks it to show the item; with closeIfShown, a preview of that item already open
// closes instead. Returns at once; onFailure runs later, on the context's thread, when
// no previewer took the call. Nothing runs once the context is gone.
void showFile(const QByteArray& item, bool closeIfShown, QObject* context,
              std::function<void()> onFailure);

} // namespace Previewer
