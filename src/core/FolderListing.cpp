#include "core/FolderListing.h"

#include <dirent.h>
#include <sys/stat.h>

QByteArray childPath(const QByteArray& folder, const QByteArray& name) {
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

std::vector<ListedEntry> listFolder(const QByteArray& folder) {
    std::vector<ListedEntry> entries;
    DIR* dir = opendir(folder.constData());
    if (!dir)
        return entries;
    while (const dirent* entry = readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == ".." || name.startsWith("._"))
            continue;
        ListedEntry listed{childPath(folder, name), entry->d_type == DT_DIR};
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st {};
            listed.isDir = lstat(listed.path.constData(), &st) == 0 && S_ISDIR(st.st_mode);
        }
        entries.push_back(std::move(listed));
    }
    closedir(dir);
    return entries;
}
