#pragma once

#include <QByteArray>
#include <atomic>

// Writes a zip archive of the item (a file, a folder with everything in it, a symbolic
// link) into the open, empty file fd, for a worker thread. The top entry is the item's
// own name; folders, files and links (stored as links) keep their permissions and
// modification times; names keep their bytes; sizes past 4 GiB use zip64. Pipes,
// sockets and devices, which a zip cannot hold, are left out. Returns 0, ECANCELED once
// stop is set, or the errno of the failure; the caller removes a failed archive.
int writeZipArchive(int fd, const QByteArray& itemPath, const std::atomic<bool>& stop);
