// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <optional>

// Opens a regular file for reading without ever blocking on what the path names: the
// path is looked at with lstat first, opened non-blocking and without following a
// final symbolic link, and checked again on the open descriptor, so a FIFO, a device,
// a socket, a folder or a link is never read (a FIFO swapped in between is closed
// again unread). The descriptor is close-on-exec; -1 when the item is not a regular
// file or cannot be opened.
int openRegularFile(const QByteArray& path);

// Up to maxBytes from the start of a regular file opened as above; none when it is
// not one or cannot be read. A huge file costs no more than its first maxBytes.
std::optional<QByteArray> readRegularFilePrefix(const QByteArray& path, qint64 maxBytes);
