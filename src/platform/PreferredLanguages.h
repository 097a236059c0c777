// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QStringList>
#include <functional>

// The user's preferred languages as BCP 47-like tags, most preferred first, read from
// the environment the way gettext does: LANGUAGE (a colon-separated list) first, then
// the first of LC_ALL, LC_MESSAGES and LANG that is set. "pt_BR.UTF-8" reads "pt-BR";
// "C" and "POSIX" name no language.
using EnvLookup = std::function<QString(const char* name)>;
QStringList preferredLanguages(const EnvLookup& env);
QStringList preferredLanguages();

// One locale name ("de_DE.UTF-8@euro") as a tag ("de-DE"); empty for C and POSIX.
QString localeNameToTag(const QString& localeName);
