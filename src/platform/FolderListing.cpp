// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/FolderListing.h"

#include "platform/Paths.h"

#include <dirent.h>
#include <sys/stat.h>

ItemKind kindOfMode(mode_t mode) {
    if (S_ISDIR(mode))
        return ItemKind::Folder;
    if (S_ISREG(mode))
        return ItemKind::File;
    return S_ISLNK(mode) ? ItemKind::Link : ItemKind::Other;
}

namespace {

ItemKind kindOfEntryType(unsigned char type) {
    switch (type) {
    case DT_DIR:
        return ItemKind::Folder;
    case DT_REG:
        return ItemKind::File;
    case DT_LNK:
        return ItemKind::Link;
    default:
        return ItemKind::Other;
    }
}

} // namespace

ItemKind kindOfEntry(const QByteArray& path, unsigned char type) {
    if (type != DT_UNKNOWN)
        return kindOfEntryType(type);
    // A file system that does not say; an entry whose kind cannot be read is a file.
    struct stat st {};
    return lstat(path.constData(), &st) == 0 ? kindOfMode(st.st_mode) : ItemKind::File;
}

std::vector<ListedEntry> listFolder(const QByteArray& folder) {
    std::vector<ListedEntry> entries;
    DIR* dir = opendir(folder.constData());
    if (!dir)
        return entries;
    while (const dirent* entry = readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        QByteArray path = childPath(folder, name);
        const ItemKind kind = kindOfEntry(path, entry->d_type);
        ListedEntry listed{std::move(path), false, kind};
        listed.isDir = listed.type == ItemKind::Folder;
        entries.push_back(std::move(listed));
    }
    closedir(dir);
    return entries;
}
