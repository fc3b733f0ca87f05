#pragma once

#include <QDateTime>
#include <QHash>
#include <QMap>
#include <QString>

// One entry of the language table: the text under each language code ("vi", "en"). A map, not
// a hash: a hash of two texts reserves room for dozens, which over the two tables held
// 0.4 MB from the first text shown.
using TPLangEntry = QMap<QString, QString>;
// Key -> entry. Immutable once built; shared by every caller for the life of the process.
using TPLangTableMap = QHash<QString, TPLangEntry>;

// The stored-settings key of the display language.
inline constexpr auto TPLangKey = "tp_lang";

// The shared two-language table, built once on first use (thread-safe).
const TPLangTableMap &TPLangTable();

// The texts of features the app adds around the described ones: the same shape, kept apart
// so that the table above stays exactly the described one. Built once on first use.
const TPLangTableMap &TPLangExtraTable();

// The stored language code, or "vi" when none (or an empty one) is stored.
// Any other stored value is returned unchanged.
QString TPCurrentLang();

// The text for `key` in the current language, from the table or else the extra table, or
// `key` itself when neither has it.
// There is no fallback to the other language.
QString TPL(const QString &key);
inline QString TPL(const char *key)
{
    return TPL(QString::fromLatin1(key));
}

// A date as the current language writes it, short with a four-digit year, and the time on a 24-hour
// clock.
QString TPLDateTime(const QDateTime &time);
