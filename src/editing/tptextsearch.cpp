#include "editing/tptextsearch.h"

TPTextSearch::TPTextSearch(const QString &pattern, bool regularExpression, bool caseSensitive)
    : m_pattern(pattern), m_regularExpression(regularExpression), m_caseSensitive(caseSensitive)
{
    QRegularExpression::PatternOptions options =
        QRegularExpression::MultilineOption | QRegularExpression::UseUnicodePropertiesOption;
    if (!caseSensitive)
        options |= QRegularExpression::CaseInsensitiveOption;
    m_expression = QRegularExpression(
        regularExpression ? pattern : QRegularExpression::escape(pattern), options);
}

QList<TPTextSearch::Match> TPTextSearch::matches(const QString &text) const
{
    QList<Match> found;
    if (isEmpty())
        return found;
    QRegularExpressionMatchIterator it = m_expression.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        if (match.capturedLength() > 0)
            found.append({match.capturedStart(), match.capturedLength()});
    }
    return found;
}

QString TPTextSearch::replacementFor(const QString &text, Match match,
                                     const QString &replacement) const
{
    if (!m_regularExpression)
        return replacement;
    const QRegularExpressionMatch groups =
        m_expression.match(text, match.first, QRegularExpression::NormalMatch,
                           QRegularExpression::AnchorAtOffsetMatchOption);
    if (!groups.hasMatch() || groups.capturedLength() != match.second)
        return replacement;
    QString result;
    for (qsizetype i = 0; i < replacement.size(); ++i) {
        const QChar c = replacement.at(i);
        if (c == u'\\' && i + 1 < replacement.size() && replacement.at(i + 1).isDigit()) {
            result += groups.captured(replacement.at(i + 1).digitValue());
            ++i;
        } else {
            result += c;
        }
    }
    return result;
}

QString TPTextSearch::replaced(const QString &text, const QList<Match> &matches,
                               const QString &replacement) const
{
    QString result;
    result.reserve(text.size());
    qsizetype copied = 0;
    for (const Match &match : matches) {
        result += QStringView(text).mid(copied, match.first - copied);
        result += replacementFor(text, match, replacement);
        copied = match.first + match.second;
    }
    result += QStringView(text).mid(copied);
    return result;
}
