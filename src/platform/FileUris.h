#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>
#include <QUrl>

// Paths travel between launches as file:// URIs. Both directions keep a path's raw
// bytes, so a name that is not valid UTF-8 arrives intact (as %XX escapes in between).

// The file:// URI of an absolute path.
QString fileUriForPath(const QByteArray& absolutePath);

// The path of a local file URL in the file system's own bytes; empty for any other URL.
QByteArray pathForFileUrl(const QUrl& url);

// A command-line argument as a path: a file:// URI (as a desktop launcher passes it)
// becomes its path, anything else is a path already.
QByteArray argumentAsPath(const QByteArray& argument);

// The URIs that a later launch hands to the running one: one per non-empty argument,
// each made absolute against the working folder.
QStringList urisForArguments(const QList<QByteArray>& arguments);
