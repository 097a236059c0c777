// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// The naming rules of the item actions, on names as the file system's bytes.
#include <QByteArray>
#include <QString>
#include <functional>

// A name split at its extension: the text after the last dot, when that dot is neither
// the first nor the last character. ".bashrc" and "notes." have none; ".config.json"
// has "json" with the base ".config".
struct NameParts {
    QByteArray base;
    QByteArray extension; // without the dot; empty when there is none
};
NameParts splitExtension(const QByteArray& name);

// The longest name most file systems take, in bytes.
inline constexpr qsizetype kNameMax = 255;

// The bytes cut to at most limit, never inside a UTF-8 character.
QByteArray cutToFit(const QByteArray& bytes, qsizetype limit);

// The duplicate's name for counter n: "report copy.pdf" (n = 1), "report copy 2.pdf".
QByteArray duplicateName(const QByteArray& name, int n);

// The archive's name for counter n: "report.zip" (n = 1), "report 2.zip"; the item's
// own extension is dropped. Shortened to fit as above.
QByteArray archiveName(const QByteArray& name, int n);

// The first counter from 1 up whose candidate name is not taken in the folder.
QByteArray firstFreeName(const std::function<QByteArray(int)>& candidate,
                         const std::function<bool(const QByteArray&)>& taken);

// The text with Unicode horizontal white space (tab and the space separators) removed
// from both ends; line breaks stay.
QString trimHorizontalSpace(const QString& text);

// What a rename dialog's answer asks for.
struct RenameRequest {
    enum Kind {
        Nothing, // empty, or canonically the old name
        Invalid, // cannot be one name in the folder: "/", ".", "..", a NUL
        Rename,
    } kind = Nothing;
    QByteArray newName; // the file system's bytes, for Rename
};
// The typed text is an edit of the old name as the field showed it (editableName):
// bytes of the old name that are not UTF-8 keep their place where left in place.
RenameRequest renameRequest(const QString& typed, const QByteArray& oldName);
