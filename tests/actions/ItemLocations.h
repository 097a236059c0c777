// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Where an item below a folder is now, as a row measured now would locate it.
#include "platform/ItemReach.h"

#include <QTest>
#include <sys/stat.h>

inline ItemLocation locationNow(const QByteArray& root, const QByteArray& relative) {
    ItemLocation location;
    struct stat top {
    }, item{}, folder{};
    const QByteArray path = relative.isEmpty() ? root : root + '/' + relative;
    const qsizetype slash = path.lastIndexOf('/');
    if (stat(root.constData(), &top) != 0 || lstat(path.constData(), &item) != 0 ||
        stat(path.left(slash).constData(), &folder) != 0)
        return location;
    location.root = root;
    location.rootId = {top.st_dev, top.st_ino};
    location.relative = relative;
    location.listedIno = item.st_ino;
    location.folderDev = folder.st_dev;
    return location;
}
