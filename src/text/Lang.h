// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <optional>
#include <vector>

// The nine interface languages, in the order of the Preferences radio buttons.
enum class Lang { ko, en, zh, es, ja, fr, de, pt, ru };

namespace LangInfo {
const std::vector<Lang>& allCases();
QString rawValue(Lang lang);
// The language's name in itself ("Deutsch").
QString native(Lang lang);
// Exactly one of the nine codes; anything else (a region, another case) is none.
std::optional<Lang> fromRawValue(const QString& code);
} // namespace LangInfo

inline size_t qHash(Lang lang, size_t seed = 0) noexcept {
    return ::qHash(LangInfo::rawValue(lang), seed);
}

// The process-wide current language; the Preferences radios change it.
struct Loc {
    static Lang current;
};

// Key -> language -> text. Filled at first use, never changed afterwards.
using StringsTable = QHash<QString, QHash<Lang, QString>>;
const StringsTable& STRINGS();

// The text of key in Loc::current, else in English, else the key itself.
QString t(const QString& key);
// The same with its places ("%@", "%d") filled by the arguments in order, and "%%" made
// "%"; what an argument holds is never read as a place.
QString tf(const QString& key, const QStringList& arguments);
// The filling alone, for a text already looked up.
QString fillPlaces(const QString& text, const QStringList& arguments);

// The first preferred language tag lower-cased and prefix-tested in allCases order;
// a stored valid code wins over it. English when nothing matches.
Lang chooseLang(const std::optional<QString>& stored, const QStringList& preferred);
