#pragma once

#include "editing/tptextsearch.h"

#include <QList>
#include <QString>

#include <utility>

// One match of a search in all files: where it is in its file, and the line it is on.
struct TPFileMatch
{
    // 1-based.
    int line = 0;
    // The match in the file's text.
    qsizetype offset = 0;
    qsizetype length = 0;
    // The line's text without its line break, and where the match starts and ends in it (a
    // match that goes on past the line ends with it).
    QString lineText;
    qsizetype column = 0;
    qsizetype columnLength = 0;
};

struct TPFileMatches
{
    QString path;
    // The first MatchesKept of the file's matches.
    QList<TPFileMatch> matches;
    int matchCount = 0;
};

// One change a replace in all files makes: lines as they are, and as they will be.
struct TPLineChange
{
    int line = 0;
    QString before;
    QString after;
};

struct TPFileReplace
{
    QString path;
    QString before;
    QString after;
    int replaced = 0;
    // The first ChangesKept changes, for the preview.
    QList<TPLineChange> changes;
};

// The search in all files over texts already read: pure, for a worker thread.
namespace TPFileSearch {

// A file with thousands of matches shows the first of them; the count says how many.
constexpr int MatchesKept = 200;
constexpr int ChangesKept = 50;

using Texts = QList<std::pair<QString, QString>>;

// Every file of `texts` that `search` matches, in the order given.
QList<TPFileMatches> find(const Texts &texts, const TPTextSearch &search);

// What replacing every match of `search` with `replacement` makes of each file it matches.
QList<TPFileReplace> replace(const Texts &texts, const TPTextSearch &search,
                             const QString &replacement);

} // namespace TPFileSearch
