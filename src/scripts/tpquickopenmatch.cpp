#include "scripts/tpquickopenmatch.h"

#include <algorithm>

namespace TPQuickOpenMatch {

Key keyOf(const QString &text)
{
    Key key;
    key.folded.reserve(text.size());
    key.origin.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        // Most paths are ASCII, which folds to lower case and has no accents.
        if (text.at(i).unicode() < 0x80) {
            key.folded.append(text.at(i).toLower());
            key.origin.append(i++);
            continue;
        }
        const qsizetype length = text.at(i).isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
        const QString character = text.mid(i, length);
        QString folded;
        for (const QChar c : character.normalized(QString::NormalizationForm_D)) {
            if (c.category() != QChar::Mark_NonSpacing)
                folded.append(c);
        }
        for (const QChar c : folded.toCaseFolded()) {
            key.folded.append(c);
            key.origin.append(i);
        }
        i += length;
    }
    return key;
}

namespace {

// The characters of the text that key units [from, from + length) come from.
QList<qsizetype> originsOf(const Key &key, qsizetype from, qsizetype length)
{
    QList<qsizetype> positions;
    for (qsizetype unit = from; unit < from + length; ++unit) {
        if (positions.isEmpty() || positions.last() != key.origin.at(unit))
            positions.append(key.origin.at(unit));
    }
    return positions;
}

// The query's letters in order in key units [from, end), leftmost first.
std::optional<QList<qsizetype>> inOrder(const QString &query, const Key &key, qsizetype from)
{
    QList<qsizetype> positions;
    qsizetype at = from;
    for (const QChar c : query) {
        at = key.folded.indexOf(c, at);
        if (at < 0)
            return std::nullopt;
        if (positions.isEmpty() || positions.last() != key.origin.at(at))
            positions.append(key.origin.at(at));
        ++at;
    }
    return positions;
}

} // namespace

std::optional<Match> match(const QString &query, const Key &key)
{
    if (query.isEmpty())
        return std::nullopt;
    const QStringView folded(key.folded);
    // Where each segment starts, in key units; the last one is the file's name.
    QList<qsizetype> starts{0};
    for (qsizetype i = 0; i < folded.size(); ++i) {
        if (folded.at(i) == u'/')
            starts.append(i + 1);
    }
    const qsizetype nameStart = starts.last();
    for (qsizetype s = 0; s < starts.size(); ++s) {
        const qsizetype start = starts.at(s);
        const qsizetype end = s + 1 < starts.size() ? starts.at(s + 1) - 1 : folded.size();
        const QStringView segment = folded.mid(start, end - start);
        const qsizetype dot = segment.lastIndexOf(u'.');
        if (segment == query || (dot > 0 && segment.left(dot) == query))
            return Match{Tier::WholeSegment, originsOf(key, start, query.size())};
    }
    if (folded.mid(nameStart).startsWith(query))
        return Match{Tier::NameStart, originsOf(key, nameStart, query.size())};
    for (const qsizetype start : std::as_const(starts)) {
        if (folded.mid(start).startsWith(query))
            return Match{Tier::SegmentStart, originsOf(key, start, query.size())};
    }
    if (const auto positions = inOrder(query, key, nameStart))
        return Match{Tier::InName, *positions};
    if (const auto positions = inOrder(query, key, 0))
        return Match{Tier::InPath, *positions};
    return std::nullopt;
}

QList<Ranked> rank(const QString &query, const QStringList &paths, const QList<Key> &keys,
                   qsizetype limit)
{
    QList<Ranked> found;
    for (qsizetype i = 0; i < paths.size() && i < keys.size(); ++i) {
        if (auto result = match(query, keys.at(i)))
            found.append({i, std::move(*result)});
    }
    const auto better = [&paths](const Ranked &a, const Ranked &b) {
        if (a.match.tier != b.match.tier)
            return a.match.tier < b.match.tier;
        const QString &pathA = paths.at(a.index);
        const QString &pathB = paths.at(b.index);
        if (pathA.size() != pathB.size())
            return pathA.size() < pathB.size();
        return pathA < pathB;
    };
    const qsizetype kept = std::min(limit, found.size());
    std::partial_sort(found.begin(), found.begin() + kept, found.end(), better);
    found.resize(kept);
    return found;
}

QString marked(const QString &text, const QList<qsizetype> &positions, qsizetype from)
{
    QString result;
    qsizetype next = 0;
    bool bold = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        while (next < positions.size() && positions.at(next) < from + i)
            ++next;
        // The second half of a character beyond the basic plane goes with its first.
        const bool matched = text.at(i).isLowSurrogate()
                                 ? bold
                                 : next < positions.size() && positions.at(next) == from + i;
        if (matched != bold) {
            result += matched ? QStringLiteral("<b>") : QStringLiteral("</b>");
            bold = matched;
        }
        result += QString(text.at(i)).toHtmlEscaped();
    }
    if (bold)
        result += QStringLiteral("</b>");
    return result;
}

} // namespace TPQuickOpenMatch
