// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

// Moves the item to the trash that the desktop's file manager uses for it (the home
// trash, or the trash at the top of the item's own file system), by the freedesktop.org
// Trash specification. Never copies across file systems: an item with no trash on its
// own file system stays where it is. Blocks; for a worker thread.
bool moveToTrash(const QByteArray& path);
