// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/Outcome.h"

#include <QByteArray>
#include <atomic>

// Writes a zip archive of the item `name` of the folder open as folderFd (a file, a
// folder with everything in it, a symbolic link) into the open, empty file outFd, for a
// worker thread. Everything is read through descriptors opened without following links.
// The top entry is the item's own name; folders, files and links (stored as links) keep
// their permissions and modification times; names keep their bytes; sizes past 4 GiB
// use zip64. Pipes, sockets and devices, which a zip cannot hold, are left out. Fails
// with ECANCELED once stop is set; the caller removes a failed archive.
Done writeZipArchive(int outFd, int folderFd, const QByteArray& name,
                     const std::atomic<bool>& stop);
