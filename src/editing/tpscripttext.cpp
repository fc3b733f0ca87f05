#include "editing/tpscripttext.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace {

// A character that ends a block in the document when it stands alone.
bool isSingleBreak(QChar unit)
{
    const char16_t c = unit.unicode();
    return c == u'\n' || c == u'\r' || c == 0x2029 || c == 0xFDD0 || c == 0xFDD1;
}

} // namespace

TPScriptText::TPScriptText()
{
    m_lineStarts.push_back(0);
}

void TPScriptText::setText(const QString &text)
{
    m_text = text;
    m_lineStarts.assign(1, 0);
    rebuildLines(0, m_text.size(), 0);
    m_dominantEnding = countDominantLineEnding();
}

qsizetype TPScriptText::breakLengthAt(qsizetype offset) const
{
    if (offset >= m_text.size())
        return 0;
    const QChar unit = m_text.at(offset);
    if (unit == u'\r')
        return offset + 1 < m_text.size() && m_text.at(offset + 1) == u'\n' ? 2 : 1;
    return isSingleBreak(unit) ? 1 : 0;
}

qsizetype TPScriptText::lineEnd(int line) const
{
    if (line + 1 >= lineCount())
        return m_text.size();
    const qsizetype next = lineStart(line + 1);
    const bool crlf =
        next - 2 >= lineStart(line) && m_text.at(next - 1) == u'\n' && m_text.at(next - 2) == u'\r';
    return next - (crlf ? 2 : 1);
}

QString TPScriptText::lineText(int line) const
{
    return m_text.mid(lineStart(line), lineEnd(line) - lineStart(line));
}

int TPScriptText::lineAt(qsizetype offset) const
{
    const auto after = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
    return int(after - m_lineStarts.begin()) - 1;
}

QString TPScriptText::countDominantLineEnding() const
{
    // In order of preference when counts tie.
    const std::array<QString, 6> endings = {QStringLiteral("\n"),   QStringLiteral("\r\n"),
                                            QStringLiteral("\r"),   QString(QChar(0x2029)),
                                            QString(QChar(0xFDD0)), QString(QChar(0xFDD1))};
    std::array<int, 6> counts{};
    for (int line = 0; line + 1 < lineCount(); ++line) {
        const qsizetype end = lineEnd(line);
        const QStringView ending = QStringView(m_text).mid(end, lineStart(line + 1) - end);
        for (size_t kind = 0; kind < endings.size(); ++kind) {
            if (ending == endings[kind]) {
                ++counts[kind];
                break;
            }
        }
    }
    const auto best = std::max_element(counts.begin(), counts.end());
    return endings[size_t(best - counts.begin())];
}

QString TPScriptText::documentText() const
{
    QString document;
    document.reserve(m_text.size());
    for (int line = 0; line < lineCount(); ++line) {
        if (line > 0)
            document.append(QChar::ParagraphSeparator);
        document.append(QStringView(m_text).mid(lineStart(line), lineEnd(line) - lineStart(line)));
    }
    return document;
}

// Finds the lines again from the start of `firstLine` up to `oldEnd` (a line start, or the
// end, of the text before the change), which lies `delta` characters further on now.
void TPScriptText::rebuildLines(int firstLine, qsizetype oldEnd, qsizetype delta)
{
    const qsizetype newEnd = oldEnd + delta;
    std::vector<qsizetype> found;
    for (qsizetype at = lineStart(firstLine); at < newEnd;) {
        const qsizetype length = breakLengthAt(at);
        at += length > 0 ? length : 1;
        if (length > 0)
            found.push_back(at);
    }
    // Old starts after the first line, up to and including oldEnd, are replaced; the rest move.
    const auto replacedBegin = m_lineStarts.begin() + firstLine + 1;
    const auto replacedEnd = std::upper_bound(replacedBegin, m_lineStarts.end(), oldEnd);
    for (auto it = replacedEnd; it != m_lineStarts.end(); ++it)
        *it += delta;
    const auto at = m_lineStarts.erase(replacedBegin, replacedEnd);
    m_lineStarts.insert(at, found.begin(), found.end());
}

TPTextEdit TPScriptText::widened(qsizetype offset, qsizetype length, const QString &inserted) const
{
    offset = std::clamp<qsizetype>(offset, 0, m_text.size());
    length = std::clamp<qsizetype>(length, 0, m_text.size() - offset);
    QString insertion = inserted;
    const auto splitsPair = [this](qsizetype at) {
        return at > 0 && at < m_text.size() && m_text.at(at - 1) == u'\r' && m_text.at(at) == u'\n';
    };
    if (splitsPair(offset)) {
        --offset;
        ++length;
        insertion.prepend(u'\r');
    }
    if (splitsPair(offset + length)) {
        ++length;
        insertion.append(u'\n');
    }
    return {offset, m_text.mid(offset, length), insertion};
}

TPTextEdit TPScriptText::replace(qsizetype offset, qsizetype length, const QString &inserted)
{
    const TPTextEdit edit = widened(offset, length, inserted);
    if (edit.removed == edit.inserted)
        return {edit.offset, {}, {}};
    offset = edit.offset;
    length = edit.removed.size();
    const QString &insertion = edit.inserted;

    // Re-read from the line before the change (a CR there may pair with a new LF) to the
    // start of the second line after it (a CR the change leaves at a line's end may pair
    // with the LF of the next line).
    const int firstLine = std::max(lineAt(offset) - 1, 0);
    const int lastLine = lineAt(offset + length);
    const qsizetype oldEnd = lastLine + 2 < lineCount() ? lineStart(lastLine + 2) : m_text.size();
    m_text.replace(offset, length, insertion);
    rebuildLines(firstLine, oldEnd, insertion.size() - length);
    return edit;
}

qsizetype TPScriptText::offsetAfterUnits(qsizetype offset, qsizetype units) const
{
    int line = lineAt(offset);
    qsizetype at = offset;
    while (units > 0) {
        const qsizetype end = lineEnd(line);
        if (at + units <= end)
            return at + units;
        if (line + 1 >= lineCount())
            return end;
        units -= end - at + 1; // the rest of the line and its break
        ++line;
        at = lineStart(line);
    }
    return at;
}

QString TPScriptText::exactInsertion(const QString &documentText, const QStringList &removedBreaks,
                                     qsizetype at, qsizetype end) const
{
    const qsizetype newBreaks = std::count_if(documentText.begin(), documentText.end(),
                                              [](QChar unit) { return isSingleBreak(unit); });
    const bool reuse = newBreaks == removedBreaks.size();
    const QString &dominant = m_dominantEnding;
    QString exact;
    exact.reserve(documentText.size());
    qsizetype breakIndex = 0;
    for (const QChar unit : documentText) {
        if (!isSingleBreak(unit)) {
            exact.append(unit);
            continue;
        }
        QString ending = reuse ? removedBreaks.at(breakIndex) : dominant;
        ++breakIndex;
        // An LF straight after a lone CR would join it into one line break.
        const QChar before =
            exact.isEmpty() ? (at > 0 ? m_text.at(at - 1) : QChar()) : exact.back();
        if (ending.startsWith(u'\n') && before == u'\r')
            ending = QStringLiteral("\r\n");
        exact.append(ending);
    }
    // A CR at the end would join the LF after the change into one line break.
    if (exact.endsWith(u'\r') && end < m_text.size() && m_text.at(end) == u'\n')
        exact.append(u'\n');
    return exact;
}

TPTextEdit TPScriptText::applyDocumentChange(int line, int column, qsizetype removedUnits,
                                             const QString &documentText)
{
    line = std::clamp(line, 0, lineCount() - 1);
    const qsizetype start =
        lineStart(line) + std::clamp<qsizetype>(column, 0, lineEnd(line) - lineStart(line));
    qsizetype end = offsetAfterUnits(start, removedUnits);

    // Skip what the document gives back unchanged at either end; a line break matches any
    // document line break.
    qsizetype from = start;
    qsizetype documentFrom = 0;
    while (from < end && documentFrom < documentText.size()) {
        const qsizetype breakLength = breakLengthAt(from);
        const QChar unit = documentText.at(documentFrom);
        if (breakLength > 0 ? !isSingleBreak(unit) : m_text.at(from) != unit)
            break;
        from += breakLength > 0 ? breakLength : 1;
        ++documentFrom;
    }
    qsizetype to = end;
    qsizetype documentTo = documentText.size();
    while (to > from && documentTo > documentFrom) {
        const bool crlf =
            to - 2 >= from && m_text.at(to - 1) == u'\n' && m_text.at(to - 2) == u'\r';
        const qsizetype unitLength = crlf ? 2 : 1;
        const QChar unit = documentText.at(documentTo - 1);
        const bool isBreak = crlf || isSingleBreak(m_text.at(to - 1));
        if (isBreak ? !isSingleBreak(unit) : m_text.at(to - 1) != unit)
            break;
        to -= unitLength;
        --documentTo;
    }

    QStringList removedBreaks;
    for (qsizetype at = from; at < to;) {
        const qsizetype breakLength = breakLengthAt(at);
        if (breakLength > 0)
            removedBreaks.append(m_text.mid(at, breakLength));
        at += breakLength > 0 ? breakLength : 1;
    }
    QString insertion = exactInsertion(documentText.mid(documentFrom, documentTo - documentFrom),
                                       removedBreaks, from, to);
    // A lone CR left right before an LF (the text between them was removed) would join them:
    // the LF becomes a CR LF, which keeps the two lines the document shows.
    const QChar before =
        insertion.isEmpty() ? (from > 0 ? m_text.at(from - 1) : QChar()) : insertion.back();
    if (before == u'\r' && to < m_text.size() && m_text.at(to) == u'\n' &&
        !insertion.endsWith(u'\n')) {
        insertion.append(QStringLiteral("\r\n"));
        ++to;
    }
    return replace(from, to - from, insertion);
}
