// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/PreferredLanguages.h"

#include <QRegularExpression>
#include <QtGlobal>

QString localeNameToTag(const QString& localeName) {
    QString tag = localeName.trimmed();
    const qsizetype cut = tag.indexOf(QRegularExpression(QStringLiteral("[.@]")));
    if (cut >= 0)
        tag.truncate(cut);
    if (tag.isEmpty() || tag == u"C" || tag == u"POSIX")
        return {};
    return tag.replace(u'_', u'-');
}

QStringList preferredLanguages(const EnvLookup& env) {
    QStringList tags;
    for (const QString& name : env("LANGUAGE").split(u':', Qt::SkipEmptyParts))
        if (const QString tag = localeNameToTag(name); !tag.isEmpty())
            tags << tag;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = env(variable);
        if (value.isEmpty())
            continue;
        if (const QString tag = localeNameToTag(value); !tag.isEmpty())
            tags << tag;
        break;
    }
    return tags;
}

QStringList preferredLanguages() {
    return preferredLanguages([](const char* name) { return qEnvironmentVariable(name); });
}
