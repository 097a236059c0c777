// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

struct SettingsCommand {
    QString program;
    QStringList arguments;
};

// The desktop's settings page for what applications may reach, where a sandboxed
// copy of this program is given access to all files: GNOME's or KDE's, whichever is
// installed. Nothing when neither is.
std::optional<SettingsCommand> appPermissionsSettings();
