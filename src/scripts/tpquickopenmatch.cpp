#include "scripts/tpquickopenmatch.h"

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

namespace TPQuickOpenMatch {

Key keyOf(const QString &path)
{
    Key key;
    key.folded.reserve(path.size());
    key.origin.reserve(path.size());
    key.segmentStarts.append(0);
    for (qsizetype i = 0; i < path.size();) {
        // Most paths are ASCII, which folds to lower case and has no accents.
        if (path.at(i).unicode() < 0x80) {
            if (path.at(i) == u'/')
                key.segmentStarts.append(key.folded.size() + 1);
            key.folded.append(path.at(i).toLower());
            key.origin.append(i++);
            continue;
        }
        const qsizetype length = path.at(i).isHighSurrogate() && i + 1 < path.size() ? 2 : 1;
        QString bare;
        for (const QChar c : path.mid(i, length).normalized(QString::NormalizationForm_D)) {
            if (c.category() != QChar::Mark_NonSpacing)
                bare.append(c);
        }
        for (const QChar c : bare.toCaseFolded()) {
            key.folded.append(c);
            key.origin.append(i);
        }
        i += length;
    }
    return key;
}

namespace {

// The end of segment `s` in the key (where its "/" is, or the key's end).
qsizetype segmentEnd(const Key &key, qsizetype s)
{
    return s + 1 < key.segmentStarts.size() ? key.segmentStarts.at(s + 1) - 1 : key.folded.size();
}

// Whether the query's letters are in the key, in order, from key unit `from` on; the
// leftmost such units go to `units` when asked.
bool inOrder(const QString &query, const Key &key, qsizetype from, QList<qsizetype> *units)
{
    qsizetype at = from;
    for (const QChar c : query) {
        at = key.folded.indexOf(c, at);
        if (at < 0)
            return false;
        if (units)
            units->append(at);
        ++at;
    }
    return true;
}

// The characters of the path that key units come from, once each.
QList<qsizetype> originsOf(const Key &key, const QList<qsizetype> &units)
{
    QList<qsizetype> positions;
    for (const qsizetype unit : units) {
        if (positions.isEmpty() || positions.last() != key.origin.at(unit))
            positions.append(key.origin.at(unit));
    }
    return positions;
}

QList<qsizetype> unitsFrom(qsizetype start, qsizetype length)
{
    QList<qsizetype> units;
    for (qsizetype unit = start; unit < start + length; ++unit)
        units.append(unit);
    return units;
}

// The tier, and where in the key its letters are when `units` is given.
std::optional<Tier> classify(const QString &query, const Key &key, QList<qsizetype> *units)
{
    if (query.isEmpty())
        return std::nullopt;
    const QStringView folded(key.folded);
    const qsizetype length = query.size();
    for (qsizetype s = 0; s < key.segmentStarts.size(); ++s) {
        const qsizetype start = key.segmentStarts.at(s);
        const QStringView segment = folded.mid(start, segmentEnd(key, s) - start);
        // The whole segment, or the part before its last dot; the cheap tests first, since
        // every path is tested at every key.
        const bool whole =
            segment.size() == length || (segment.size() > length && segment.at(length) == u'.' &&
                                         segment.lastIndexOf(u'.') == length);
        if (whole && segment.startsWith(query)) {
            if (units)
                *units = unitsFrom(start, query.size());
            return Tier::WholeSegment;
        }
    }
    const qsizetype nameStart = key.segmentStarts.last();
    if (folded.mid(nameStart).startsWith(query)) {
        if (units)
            *units = unitsFrom(nameStart, query.size());
        return Tier::NameStart;
    }
    for (const qsizetype start : key.segmentStarts) {
        if (folded.mid(start).startsWith(query)) {
            if (units)
                *units = unitsFrom(start, query.size());
            return Tier::SegmentStart;
        }
    }
    if (inOrder(query, key, nameStart, units))
        return Tier::InName;
    if (units)
        units->clear();
    if (inOrder(query, key, 0, units))
        return Tier::InPath;
    return std::nullopt;
}

} // namespace

std::optional<Tier> tierOf(const QString &query, const Key &key)
{
    return classify(query, key, nullptr);
}

std::optional<Match> match(const QString &query, const Key &key)
{
    QList<qsizetype> units;
    const std::optional<Tier> tier = classify(query, key, &units);
    if (!tier)
        return std::nullopt;
    return Match{*tier, originsOf(key, units)};
}

bool comesFirst(const QString &a, const QString &b)
{
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

Ranking rank(const QString &query, const QList<Key> &keys, qsizetype limit,
             const QList<qsizetype> *candidates)
{
    // A long list is cut into one contiguous part per core; the parts' results, joined in
    // order, are what one pass over the whole list gives.
    constexpr qsizetype kPartFrom = 20000;
    const qsizetype total = candidates ? candidates->size() : keys.size();
    const qsizetype partCount =
        total >= kPartFrom ? std::max<qsizetype>(1, std::thread::hardware_concurrency()) : 1;
    struct Part
    {
        std::array<QList<qsizetype>, TierCount> tiers;
        QList<qsizetype> matched;
    };
    std::vector<Part> parts(static_cast<size_t>(partCount));
    const auto matchPart = [&](qsizetype part) {
        Part &into = parts.at(size_t(part));
        for (qsizetype at = total * part / partCount; at < total * (part + 1) / partCount; ++at) {
            const qsizetype index = candidates ? candidates->at(at) : at;
            const std::optional<Tier> tier = tierOf(query, keys.at(index));
            if (!tier)
                continue;
            into.matched.append(index);
            QList<qsizetype> &sameTier = into.tiers.at(size_t(*tier));
            if (sameTier.size() < limit)
                sameTier.append(index);
        }
    };
    std::vector<std::thread> helpers;
    for (qsizetype part = 1; part < partCount; ++part)
        helpers.emplace_back(matchPart, part);
    matchPart(0);
    for (std::thread &helper : helpers)
        helper.join();

    Ranking ranking;
    for (const Part &part : parts)
        ranking.matched.append(part.matched);
    for (int tier = 0; tier < TierCount; ++tier) {
        for (const Part &part : parts) {
            for (const qsizetype index : part.tiers.at(size_t(tier))) {
                if (ranking.best.size() == limit)
                    return ranking;
                ranking.best.append({index, *match(query, keys.at(index))});
            }
        }
    }
    return ranking;
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
