#pragma once

#include <QByteArray>
#include <memory>

class QMimeData;

// What a file manager puts on the clipboard when it copies an item: the item's URI as
// text/uri-list and as x-special/gnome-copied-files ("copy", a line feed, the URI), so
// that a paste in a file manager copies the item itself. Every byte of the path is
// kept: bytes outside plain ASCII travel percent-escaped.
//
// Nothing that pastes as text is offered. Qt turns URIs into plain text wherever it
// can (its own text/plain fallback, and the X11 layer's extra text/plain target for
// text/uri-list); these data hand out their two formats only as raw bytes, so every
// text rendering of them comes out empty.
std::unique_ptr<QMimeData> fileCopyMimeData(const QByteArray& path);

inline constexpr const char* kUriListType = "text/uri-list";
inline constexpr const char* kGnomeCopiedFilesType = "x-special/gnome-copied-files";
