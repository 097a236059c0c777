// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// A name in the rename field: each byte that is not part of a UTF-8 character shows as
// U+FFFD, and goes back to being that byte when the person leaves it where it was, so
// that only what they changed changes.

// The name as the field shows it.
QString editableName(const QByteArray& name);

// The bytes that the person's edit of editableName(original) stands for: characters
// left in place keep the bytes they stood for, the rest are UTF-8.
QByteArray nameFromEdit(const QByteArray& original, const QString& edited);
