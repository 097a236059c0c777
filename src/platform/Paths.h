// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// Paths are the file system's own bytes; these take them apart and put them together
// without ever converting them.

// The path of `name` inside `folder` ("/" + "a" is "/a", not "//a").
QByteArray childPath(const QByteArray& folder, const QByteArray& name);
// The last path component, or the whole path when that component is empty ("/").
QByteArray lastPathComponent(const QByteArray& path);
// The path with its last component removed ("/" stays "/").
QByteArray deletingLastPathComponent(const QByteArray& path);
// A path's bytes as text for display, with U+FFFD for bytes that are not UTF-8.
QString displayPath(const QByteArray& path);
