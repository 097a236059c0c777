// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

class QObject;

// Deletes object when owner is destroyed, for things that cannot take owner as their
// Qt parent (a top-level widget kept by a plain QObject). Nothing happens if object
// goes first.
void deleteWith(QObject* owner, QObject* object);
