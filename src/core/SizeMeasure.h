// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

class StopFlag;

// The allocated size of the item itself (a link is measured as the link), else its
// logical size, else 0.
qint64 fileAllocatedSize(const QByteArray& path);

// One "du -sk" over the folder; 0 when du cannot run or prints nothing usable. It
// blocks the calling worker; when the work is stopped meanwhile, its du is ended and
// the result means nothing. A link given as the folder is followed (the folder it
// leads to is what was asked for); links beneath it are counted as themselves.
qint64 folderDiskUsage(const QByteArray& path, const StopFlag* stop = nullptr);
