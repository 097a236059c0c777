// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/AppVersion.h"

QString versionText(const char* raw) {
    const QString text = QString::fromUtf8(raw);
    return text.isEmpty() ? QStringLiteral("?") : text;
}

QString appVersion() {
#ifdef SIZELOOM_VERSION
    return versionText(SIZELOOM_VERSION);
#else
    return versionText(nullptr);
#endif
}
