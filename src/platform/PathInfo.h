// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

// A path made absolute against the working folder, bytes kept as they are.
QByteArray absolutePath(const QByteArray& path);
// An item exists at path and is a folder (a link to a folder counts).
bool isExistingDirectory(const QByteArray& path);
bool itemExists(const QByteArray& path);
// A leading "~" or "~user" replaced by that home folder; anything else unchanged.
QByteArray expandTilde(const QByteArray& path);
