// SPDX-License-Identifier: GPL-2.0-or-later
#include "views/PermissionSettings.h"

#include <QStandardPaths>

std::optional<SettingsCommand> appPermissionsSettings() {
    const QList<SettingsCommand> known{
        {QStringLiteral("gnome-control-center"), {QStringLiteral("applications")}},
        {QStringLiteral("systemsettings"), {QStringLiteral("kcm_app-permissions")}},
    };
    for (const SettingsCommand& command : known) {
        const QString program = QStandardPaths::findExecutable(command.program);
        if (!program.isEmpty())
            return SettingsCommand{program, command.arguments};
    }
    return std::nullopt;
}
