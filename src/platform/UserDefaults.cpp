// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/UserDefaults.h"

std::unique_ptr<QSettings> userDefaults() {
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                       QStringLiteral("sizeloom"), QStringLiteral("sizeloom"));
}
