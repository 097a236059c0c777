#pragma once

#include <QByteArray>

class Node;

// Bytes the item occupies on disk, everything beneath it included for a folder.
// Blocks the calling worker (a folder runs one du); never returns a negative value.
qint64 computeSize(const Node& node);

// The allocated size of the item itself (a link is measured as the link), else its
// logical size, else 0.
qint64 fileAllocatedSize(const QByteArray& path);

// One "du -sk" over the folder; 0 when du cannot run or prints nothing usable.
qint64 folderDiskUsage(const QByteArray& path);
