// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <optional>

class QWidget;

// Asks for a new name in a modal dialog whose field holds the whole current name; the
// text as typed, or nothing when cancelled.
std::optional<QString> askNewName(QWidget* parent, const QString& currentName);
