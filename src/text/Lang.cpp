// SPDX-License-Identifier: GPL-2.0-or-later
#include "text/Lang.h"

#include "text/StringTable.h"

Lang Loc::current = Lang::en;

namespace {

struct LangRow {
    Lang lang;
    const char* code;
    const char* native;
};

constexpr LangRow kLangs[] = {
    {Lang::ko, "ko", "한국어"},  {Lang::en, "en", "English"},   {Lang::zh, "zh", "中文"},
    {Lang::es, "es", "Español"}, {Lang::ja, "ja", "日本語"},    {Lang::fr, "fr", "Français"},
    {Lang::de, "de", "Deutsch"}, {Lang::pt, "pt", "Português"}, {Lang::ru, "ru", "Русский"},
};

const LangRow& rowOf(Lang lang) {
    return kLangs[static_cast<int>(lang)];
}

} // namespace

const std::vector<Lang>& LangInfo::allCases() {
    static const std::vector<Lang> all = [] {
        std::vector<Lang> list;
        for (const LangRow& row : kLangs)
            list.push_back(row.lang);
        return list;
    }();
    return all;
}

QString LangInfo::rawValue(Lang lang) {
    return QString::fromLatin1(rowOf(lang).code);
}

QString LangInfo::native(Lang lang) {
    return QString::fromUtf8(rowOf(lang).native);
}

std::optional<Lang> LangInfo::fromRawValue(const QString& code) {
    for (const LangRow& row : kLangs)
        if (code == QLatin1String(row.code))
            return row.lang;
    return std::nullopt;
}

const StringsTable& STRINGS() {
    static const StringsTable table = [] {
        StringsTable filled;
        for (const StringRow& row : kStringRows) {
            QHash<Lang, QString>& texts = filled[QString::fromLatin1(row.key)];
            for (Lang lang : LangInfo::allCases())
                texts.insert(lang, QString::fromUtf8(row.texts[static_cast<int>(lang)]));
        }
        return filled;
    }();
    return table;
}

QString t(const QString& key) {
    const auto entry = STRINGS().constFind(key);
    if (entry == STRINGS().constEnd())
        return key;
    if (const auto text = entry->constFind(Loc::current); text != entry->constEnd())
        return *text;
    if (const auto text = entry->constFind(Lang::en); text != entry->constEnd())
        return *text;
    return key;
}

Lang chooseLang(const std::optional<QString>& stored, const QStringList& preferred) {
    if (stored)
        if (const auto lang = LangInfo::fromRawValue(*stored))
            return *lang;
    const QString first = preferred.isEmpty() ? QStringLiteral("en") : preferred.first().toLower();
    for (Lang lang : LangInfo::allCases())
        if (first.startsWith(LangInfo::rawValue(lang)))
            return lang;
    return Lang::en;
}

QString fillPlaces(const QString& text, const QStringList& arguments) {
    QString filled;
    qsizetype next = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool place = text[at] == u'%' && at + 1 < text.size() &&
                           (text[at + 1] == u'@' || text[at + 1] == u'd');
        if (place && next < arguments.size()) {
            filled += arguments[next++];
            ++at;
        } else if (text[at] == u'%' && at + 1 < text.size() && text[at + 1] == u'%') {
            filled += u'%';
            ++at;
        } else {
            filled += text[at];
        }
    }
    return filled;
}

QString tf(const QString& key, const QStringList& arguments) {
    return fillPlaces(t(key), arguments);
}
