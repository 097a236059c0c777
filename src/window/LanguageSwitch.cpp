// SPDX-License-Identifier: GPL-2.0-or-later
#include "window/LanguageSwitch.h"

#include "platform/PreferredLanguages.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QEvent>

namespace {
const QString kLanguageKey = QStringLiteral("lang");
} // namespace

Lang startupLanguage() {
    const QVariant stored = userDefaults()->value(kLanguageKey);
    const std::optional<QString> code =
        stored.isValid() ? std::optional<QString>(stored.toString()) : std::nullopt;
    return chooseLang(code, preferredLanguages());
}

void switchLanguage(Lang lang) {
    Loc::current = lang;
    userDefaults()->setValue(kLanguageKey, LangInfo::rawValue(lang));
    // The application hands the event on to every window, and each widget to its
    // children.
    if (QCoreApplication* app = QCoreApplication::instance())
        QCoreApplication::postEvent(app, new QEvent(QEvent::LanguageChange));
}
