// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FolderHandler.h"

#include "platform/FileUrl.h"

#include <cstring>
#include <gio/gio.h>

namespace {

constexpr const char* kFolderType = "inode/directory";

bool isOwnEntry(GAppInfo* app) {
    const char* id = g_app_info_get_id(app);
    return id && std::strcmp(id, kOwnDesktopId) == 0;
}

// The default for folders unless that is this program; then the first other
// application that declares folders, in the desktop's order of preference.
GAppInfo* folderHandler() {
    GAppInfo* chosen = g_app_info_get_default_for_type(kFolderType, FALSE);
    if (chosen && !isOwnEntry(chosen))
        return chosen;
    if (chosen)
        g_object_unref(chosen);
    chosen = nullptr;
    GList* all = g_app_info_get_all_for_type(kFolderType);
    for (GList* entry = all; entry && !chosen; entry = entry->next) {
        auto* app = static_cast<GAppInfo*>(entry->data);
        if (!isOwnEntry(app))
            chosen = G_APP_INFO(g_object_ref(app));
    }
    g_list_free_full(all, g_object_unref);
    return chosen;
}

} // namespace

bool openWithDefaultFolderHandler(const QByteArray& folder) {
    GAppInfo* app = folderHandler();
    if (!app)
        return false;
    const QByteArray uri = fileUrlFromPathBytes(folder).toEncoded();
    GList uris{};
    uris.data = const_cast<char*>(uri.constData());
    GError* error = nullptr;
    // Spawns the application (or activates it over the bus) and returns; the
    // application's own run is never waited for.
    const bool started = g_app_info_launch_uris(app, &uris, nullptr, &error);
    if (error)
        g_error_free(error);
    g_object_unref(app);
    return started;
}
