// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QtGlobal>

// Which file an entry is: its device and inode number. Two entries with the same id are
// the same file (hard links of it, or the same entry seen twice).
struct FileId {
    quint64 dev = 0;
    quint64 ino = 0;

    bool known() const { return ino != 0; }
    bool operator==(const FileId&) const = default;
};
