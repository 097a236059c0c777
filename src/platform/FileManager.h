// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

class QObject;

// The desktop's file manager, through its org.freedesktop.FileManager1 interface on the
// session bus. Nothing waits for it: the call goes out and onFailure runs later, on
// the context's thread, when no file manager took it (none on the bus, or one that
// lacks the method). Nothing runs once the context is gone.
namespace FileManager {

inline const QString service = QStringLiteral("org.freedesktop.FileManager1");
inline const QString path = QStringLiteral("/org/freedesktop/FileManager1");

// The item selected in a window of its folder.
void showItem(const QByteArray& item, QObject* context, std::function<void()> onFailure);
// The file manager's own properties window for the item.
void showItemProperties(const QByteArray& item, QObject* context, std::function<void()> onFailure);

// The token that lets the file manager's window come to the front on our behalf: the
// one this program was launched with, or none.
QString startupId();

} // namespace FileManager
