#pragma once

#include <QByteArray>
#include <vector>

struct ListedEntry {
    QByteArray path;
    bool isDir = false;
};

// The folder's entries in the order the file system returns them, "._" companion
// files left out and hidden files kept. isDir describes the entry itself: a link to
// a folder is not a folder. A folder that cannot be read lists as empty.
std::vector<ListedEntry> listFolder(const QByteArray& folder);

// The path of a child called name inside folder.
QByteArray childPath(const QByteArray& folder, const QByteArray& name);
