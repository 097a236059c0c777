// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/ItemRef.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>

// The ten actions on a row's item.
enum class FileAction {
    Reveal,
    Preview,
    Properties,
    Rename,
    Duplicate,
    Trash,
    Copy,
    CopyPath,
    Share,
    Compress
};

// What an action came to, for the window to report and to show.
struct ActionOutcome {
    FileAction action = FileAction::Reveal;
    // The item's name as shown.
    QString itemName;
    // The action has begun and goes on in the background (Compress).
    bool underWay = false;
    // 0 when done; kItemChanged when the item was not the one its row showed (nothing
    // was done); ECANCELED when the person cancelled it; else the system's reason.
    int error = 0;
    // What the action names when done: the archive, the copy, the path copied.
    QString detail;
    // The item whose folder changed on disk and is listed again.
    ItemRef changed;
    // A folder to open as the root instead: the opened folder renamed.
    QByteArray reopen;
};
Q_DECLARE_METATYPE(ActionOutcome)
