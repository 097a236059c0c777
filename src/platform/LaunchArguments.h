// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

// A command-line argument as a path: a file:// URI (as a desktop launcher passes it)
// becomes its path, anything else is a path already. Raw bytes throughout.
QByteArray argumentAsPath(const QByteArray& argument);

// The URIs that a later launch hands to the running one: one file:// URI per
// non-empty argument, made absolute against the working folder. A name that is not
// UTF-8 travels as %XX escapes and arrives intact.
QStringList urisForArguments(const QList<QByteArray>& arguments);
