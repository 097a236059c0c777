// SPDX-License-Identifier: GPL-2.0-or-later
#include "text/LangLocale.h"

namespace {

// The tags to try for a language, best first.
QStringList tagsFor(Lang lang) {
    switch (lang) {
    case Lang::zh:
        return {QStringLiteral("zh_CN"), QStringLiteral("zh")};
    case Lang::pt:
        return {QStringLiteral("pt_BR"), QStringLiteral("pt")};
    case Lang::en:
        return {QStringLiteral("en_US"), QStringLiteral("en")};
    default:
        return {LangInfo::rawValue(lang)};
    }
}

} // namespace

QLocale localeFor(Lang lang) {
    switch (lang) {
    case Lang::ko:
        return QLocale(QLocale::Korean, QLocale::SouthKorea);
    case Lang::en:
        return QLocale(QLocale::English, QLocale::UnitedStates);
    case Lang::zh:
        return QLocale(QLocale::Chinese, QLocale::China);
    case Lang::es:
        return QLocale(QLocale::Spanish, QLocale::Spain);
    case Lang::ja:
        return QLocale(QLocale::Japanese, QLocale::Japan);
    case Lang::fr:
        return QLocale(QLocale::French, QLocale::France);
    case Lang::de:
        return QLocale(QLocale::German, QLocale::Germany);
    case Lang::pt:
        return QLocale(QLocale::Portuguese, QLocale::Brazil);
    case Lang::ru:
        return QLocale(QLocale::Russian, QLocale::Russia);
    }
    return QLocale::c();
}

QString formatDateTime(const QDateTime& when, Lang lang) {
    return localeFor(lang).toString(when, QLocale::LongFormat);
}

QString describeIn(const QHash<QString, QString>& byTag, Lang lang) {
    QString text;
    for (const QString& tag : tagsFor(lang))
        if (text.isEmpty())
            text = byTag.value(tag);
    if (text.isEmpty())
        text = byTag.value(QString());
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text;
}
