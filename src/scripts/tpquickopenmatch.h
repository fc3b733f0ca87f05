#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// How quick open finds a file by a few typed letters: the letters in order, not
// necessarily together, in the file's path, with case and accents ignored.
namespace TPQuickOpenMatch {

// A text made comparable: accents taken off and case folded, one piece per character of
// the text, so that a position in the key leads back to a character of the text.
struct Key
{
    QString folded;
    // For each unit of `folded`, the index of the character of the text it comes from.
    QList<qsizetype> origin;
};
Key keyOf(const QString &text);

// How well a path matches, best first: the query is a whole segment of it (a folder, the
// file's name, or the name without its extension); the file's name starts with it; a
// segment starts with it; the file's name holds its letters in order; the path does.
enum class Tier { WholeSegment, NameStart, SegmentStart, InName, InPath };

struct Match
{
    Tier tier;
    // The matched characters of the path, in order.
    QList<qsizetype> positions;
};
// Whether the path with this key matches the folded, non-empty `query`, and how.
std::optional<Match> match(const QString &query, const Key &key);

struct Ranked
{
    // The index of the path in the list given.
    qsizetype index;
    Match match;
};
// The paths that match, best first: by tier, then shorter paths, then by path; at most
// `limit` of them.
QList<Ranked> rank(const QString &query, const QStringList &paths, const QList<Key> &keys,
                   qsizetype limit);

// `text` with its matched characters in bold, as styled text, everything else escaped;
// `text` starts at character `from` of the path the positions count in.
QString marked(const QString &text, const QList<qsizetype> &positions, qsizetype from = 0);

} // namespace TPQuickOpenMatch
