// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "text/Lang.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>

// The locale that writes numbers and dates the way the interface language does. The
// nine languages' own countries; Portuguese as in Brazil, like the texts.
QLocale localeFor(Lang lang);

// A date and time in the language's long form: weekday, seconds and time zone included.
QString formatDateTime(const QDateTime& when, Lang lang);

// From descriptions by language tag (as the MIME database has them, "" untranslated),
// the one for the language, else the untranslated one; its first letter upper case.
QString describeIn(const QHash<QString, QString>& byTag, Lang lang);
