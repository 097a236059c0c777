// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/Trash.h"

#include <gio/gio.h>

bool moveToTrash(const QByteArray& path) {
    // GIO renames into the trash (never a copy) and fails where no trash on the item's
    // own file system can be used; the path is taken as bytes.
    GFile* file = g_file_new_for_path(path.constData());
    GError* error = nullptr;
    const bool trashed = g_file_trash(file, nullptr, &error);
    if (error)
        g_error_free(error);
    g_object_unref(file);
    return trashed;
}
