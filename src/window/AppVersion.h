// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

// The version text shown in the About window: the build's version, "?" without one.
QString appVersion();

// The version text for a raw build value, which may be missing or empty.
QString versionText(const char* raw);
