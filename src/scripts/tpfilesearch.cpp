#include "scripts/tpfilesearch.h"

namespace {

// Walks a text's lines forwards, for offsets given in order.
class LineWalker
{
public:
    explicit LineWalker(const QString &text) : m_text(text) {}

    // The 1-based line of `offset`, which is never before the last one asked.
    int lineOf(qsizetype offset)
    {
        for (qsizetype at = m_text.indexOf(u'\n', m_lineStart); at >= 0 && at < offset;
             at = m_text.indexOf(u'\n', m_lineStart)) {
            m_lineStart = at + 1;
            ++m_line;
        }
        return m_line;
    }
    // Where the line found last starts.
    qsizetype lineStart() const { return m_lineStart; }

private:
    const QString &m_text;
    qsizetype m_lineStart = 0;
    int m_line = 1;
};

// Where the line holding `offset` ends, before its line break (CR LF or LF).
qsizetype lineEnd(const QString &text, qsizetype offset)
{
    qsizetype end = text.indexOf(u'\n', offset);
    if (end < 0)
        end = text.size();
    if (end > 0 && end <= text.size() && end - 1 >= offset && text.at(end - 1) == u'\r')
        --end;
    return end;
}

qsizetype lineStartOf(const QString &text, qsizetype offset)
{
    return offset == 0 ? 0 : text.lastIndexOf(u'\n', offset - 1) + 1;
}

// The whole lines that the text from `from` up to `to` touches.
QString linesSpanning(const QString &text, qsizetype from, qsizetype to)
{
    const qsizetype start = lineStartOf(text, from);
    return text.mid(start, lineEnd(text, std::max(from, to - 1)) - start);
}

} // namespace

namespace TPFileSearch {

QList<TPFileMatches> find(const Texts &texts, const TPTextSearch &search)
{
    QList<TPFileMatches> found;
    if (search.isEmpty())
        return found;
    for (const auto &[path, text] : texts) {
        const QList<TPTextSearch::Match> matches = search.matches(text);
        if (matches.isEmpty())
            continue;
        TPFileMatches file{path, {}, int(matches.size())};
        LineWalker lines(text);
        for (const auto &[offset, length] : matches) {
            if (file.matches.size() >= MatchesKept)
                break;
            TPFileMatch match;
            match.line = lines.lineOf(offset);
            match.offset = offset;
            match.length = length;
            const qsizetype start = lines.lineStart();
            const qsizetype end = lineEnd(text, offset);
            match.lineText = text.mid(start, end - start);
            match.column = offset - start;
            match.columnLength = std::min(offset + length, end) - offset;
            file.matches.append(match);
        }
        found.append(file);
    }
    return found;
}

QList<TPFileReplace> replace(const Texts &texts, const TPTextSearch &search,
                             const QString &replacement)
{
    QList<TPFileReplace> changed;
    if (search.isEmpty())
        return changed;
    for (const auto &[path, text] : texts) {
        const QList<TPTextSearch::Match> matches = search.matches(text);
        if (matches.isEmpty())
            continue;
        TPFileReplace file;
        file.path = path;
        file.before = text;
        file.after = search.replaced(text, matches, replacement);
        file.replaced = int(matches.size());
        // Matches on the same lines make one change; each change shows the lines it spans,
        // before and after. Offsets in the new text move by what the earlier replacements
        // added or took away.
        LineWalker lines(text);
        qsizetype shift = 0;
        struct Span
        {
            int line;
            qsizetype from, to, newFrom, newTo;
        };
        QList<Span> spans;
        for (const auto &match : matches) {
            const auto [offset, length] = match;
            const qsizetype inserted = search.replacementFor(text, match, replacement).size();
            const Span span{lines.lineOf(offset), offset, offset + length, offset + shift,
                            offset + shift + inserted};
            shift += inserted - length;
            if (!spans.isEmpty() &&
                lineStartOf(text, span.from) <= lineEnd(text, spans.last().to)) {
                spans.last().to = span.to;
                spans.last().newTo = span.newTo;
            } else {
                if (spans.size() >= ChangesKept)
                    continue;
                spans.append(span);
            }
        }
        for (const Span &span : std::as_const(spans))
            file.changes.append({span.line, linesSpanning(text, span.from, span.to),
                                 linesSpanning(file.after, span.newFrom, span.newTo)});
        changed.append(file);
    }
    return changed;
}

} // namespace TPFileSearch
