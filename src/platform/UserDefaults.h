// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QSettings>
#include <memory>

// The per-user settings store (an ini file in the XDG config folder). It holds the
// interface language under "lang" and the main window's geometry.
std::unique_ptr<QSettings> userDefaults();
