#pragma once

#include <QList>
#include <QRegularExpression>
#include <QString>

#include <utility>

// One query over exact text, as the editor's find and the search in all files both put it:
// plain text or a regular expression, with or without case. It finds every match and makes
// each match's replacement, where "\0" to "\9" name a regular expression's groups. A value
// that any thread may use.
class TPTextSearch
{
public:
    // A match as (offset, length) in UTF-16 code units.
    using Match = std::pair<qsizetype, qsizetype>;

    TPTextSearch() = default;
    TPTextSearch(const QString &pattern, bool regularExpression, bool caseSensitive);

    QString pattern() const { return m_pattern; }
    bool regularExpression() const { return m_regularExpression; }
    bool caseSensitive() const { return m_caseSensitive; }
    // Nothing to look for: no pattern, or a regular expression that does not compile.
    bool isEmpty() const { return m_pattern.isEmpty() || !m_expression.isValid(); }
    bool isValid() const { return m_expression.isValid(); }

    // Every match in order. An empty match (a pattern such as "x*") is not one: it would
    // select nothing and replace nothing.
    QList<Match> matches(const QString &text) const;
    // What replaces the match at `match` in `text`.
    QString replacementFor(const QString &text, Match match, const QString &replacement) const;
    // `text` with each of `matches` (in order, as matches() gives them) replaced.
    QString replaced(const QString &text, const QList<Match> &matches,
                     const QString &replacement) const;

private:
    QString m_pattern;
    bool m_regularExpression = false;
    bool m_caseSensitive = false;
    QRegularExpression m_expression;
};
