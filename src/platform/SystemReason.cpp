// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/SystemReason.h"

#include <QHash>
#include <cstring>
#include <locale.h>

namespace {

// The locales that carry each interface language's messages, most likely first.
QStringList localeNamesFor(const QString& code) {
    static const QHash<QString, QStringList> regions = {
        {"ko", {"ko_KR"}}, {"en", {"en_US", "en_GB"}}, {"zh", {"zh_CN", "zh_TW"}},
        {"es", {"es_ES"}}, {"ja", {"ja_JP"}},          {"fr", {"fr_FR"}},
        {"de", {"de_DE"}}, {"pt", {"pt_BR", "pt_PT"}}, {"ru", {"ru_RU"}},
    };
    QStringList names;
    for (const QString& region : regions.value(code))
        names << region + ".UTF-8" << region + ".utf8";
    return names;
}

} // namespace

QString systemReason(int error, const QString& languageCode) {
    for (const QString& name : localeNamesFor(languageCode)) {
        const locale_t messages =
            newlocale(LC_MESSAGES_MASK | LC_CTYPE_MASK, name.toLatin1().constData(), nullptr);
        if (!messages)
            continue;
        const QString text = QString::fromUtf8(strerror_l(error, messages));
        freelocale(messages);
        return text;
    }
    return QString::fromLocal8Bit(strerror(error));
}
