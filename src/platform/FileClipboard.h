// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <memory>

class QMimeData;

// What a file manager puts on the clipboard when it copies items: their URIs as
// text/uri-list and as x-special/gnome-copied-files ("copy", then a URI a line), so that
// a paste in a file manager copies the items themselves, and their paths as text, one a
// line, so that a paste into a text field gives the paths. Every byte of a path is kept
// in its URI (bytes outside plain ASCII travel percent-escaped) and in the text's raw
// bytes; text asked for as Unicode shows a byte that is not UTF-8 as U+FFFD.
std::unique_ptr<QMimeData> fileCopyMimeData(const QList<QByteArray>& paths);

inline constexpr const char* kUriListType = "text/uri-list";
inline constexpr const char* kGnomeCopiedFilesType = "x-special/gnome-copied-files";
inline constexpr const char* kPlainTextType = "text/plain";
