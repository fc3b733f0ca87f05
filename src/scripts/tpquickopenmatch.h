#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// How quick open finds a file by a few typed letters: the letters in order, not
// necessarily together, in the file's path, with case and accents ignored.
namespace TPQuickOpenMatch {

// A path made comparable: accents taken off and case folded, one piece per character of
// the path, so that a position in the key leads back to a character of the path.
struct Key
{
    QString folded;
    // For each unit of `folded`, the index of the character of the path it comes from.
    QList<qsizetype> origin;
    // Where each segment starts in `folded`; the last one is the file's name.
    QList<qsizetype> segmentStarts;
};
Key keyOf(const QString &path);

// How well a path matches, best first: the query is a whole segment of it (a folder, the
// file's name, or the name without its extension); the file's name starts with it; a
// segment starts with it; the file's name holds its letters in order; the path does.
enum class Tier { WholeSegment, NameStart, SegmentStart, InName, InPath };
inline constexpr int TierCount = 5;

// How the path with this key matches the folded, non-empty `query`, if it does.
std::optional<Tier> tierOf(const QString &query, const Key &key);

struct Match
{
    Tier tier;
    // The matched characters of the path, in order.
    QList<qsizetype> positions;
};
std::optional<Match> match(const QString &query, const Key &key);

// The order results keep within a tier: shorter paths first, then by path. Quick open sorts
// its paths so once, and ranking keeps their order.
bool comesFirst(const QString &a, const QString &b);

struct Ranked
{
    // The index of the path among the keys given.
    qsizetype index;
    Match match;
};
struct Ranking
{
    // The best matches: by tier, then in the keys' order; at most the limit asked for.
    QList<Ranked> best;
    // Every key that matches, in the keys' order: a longer query's matches are among them.
    QList<qsizetype> matched;
};
// Matches `query` against the keys, or against those of `candidates` only (indexes in
// ascending order).
Ranking rank(const QString &query, const QList<Key> &keys, qsizetype limit,
             const QList<qsizetype> *candidates = nullptr);

// `text` with its matched characters in bold, as styled text, everything else escaped;
// `text` starts at character `from` of the path the positions count in.
QString marked(const QString &text, const QList<qsizetype> &positions, qsizetype from = 0);

} // namespace TPQuickOpenMatch
