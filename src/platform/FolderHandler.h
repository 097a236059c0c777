// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>

// Opens the folder with the desktop's default application for folders, the way a file
// manager opens one. This program is never chosen, although its desktop entry accepts
// folders: the next application for folders is taken instead. Does not wait for the
// application; false when there is none or it could not be started.
bool openWithDefaultFolderHandler(const QByteArray& folder);

// The desktop entry this program is installed under.
inline constexpr const char* kOwnDesktopId = "org.sizeloom.Sizeloom.desktop";
