#include "editing/tpcodeeditrules.h"

#include <QRegularExpression>

#include <algorithm>

namespace TPCodeEditRules {

namespace {

constexpr QStringView kOpeners = u"([{\"'";
constexpr QStringView kClosers = u")]}\"'";

QChar closerFor(QChar opener)
{
    const qsizetype index = kOpeners.indexOf(opener);
    return index < 0 ? QChar() : kClosers.at(index);
}

QChar charAt(const QString &text, qsizetype offset)
{
    return offset >= 0 && offset < text.size() ? text.at(offset) : QChar();
}

// The code of a line without a trailing "--" comment (quotes are followed, roughly).
QString withoutComment(const QString &line)
{
    QChar quote;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (!quote.isNull()) {
            if (c == u'\\')
                ++i;
            else if (c == quote)
                quote = QChar();
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'-' && charAt(line, i + 1) == u'-') {
            return line.left(i);
        }
    }
    return line;
}

} // namespace

QString leadingWhitespace(const QString &line)
{
    qsizetype length = 0;
    while (length < line.size() && (line.at(length) == u' ' || line.at(length) == u'\t'))
        ++length;
    return line.left(length);
}

QString indentUnit(const TPScriptText &text)
{
    int tabbed = 0;
    int spaced = 0;
    qsizetype smallest = 0;
    for (int line = 0; line < text.lineCount(); ++line) {
        const QString indent = leadingWhitespace(text.lineText(line));
        if (indent.isEmpty() || indent.size() == text.lineText(line).size())
            continue;
        if (indent.startsWith(u'\t')) {
            ++tabbed;
        } else {
            ++spaced;
            smallest = smallest == 0 ? indent.size() : std::min(smallest, indent.size());
        }
    }
    if (tabbed > spaced)
        return QStringLiteral("\t");
    return QString(spaced > 0 ? std::clamp<qsizetype>(smallest, 2, 8) : 4, u' ');
}

bool opensBlock(const QString &lineBeforeCursor)
{
    static const QRegularExpression opener(QStringLiteral(
        "(?:\\b(?:then|do|else|repeat)|\\bfunction\\b[^()]*\\([^()]*\\)|[{(])\\s*$"));
    return opener.match(withoutComment(lineBeforeCursor)).hasMatch();
}

Action newLine(const TPScriptText &text, qsizetype anchor, qsizetype cursor, const QString &unit)
{
    const qsizetype from = std::min(anchor, cursor);
    const qsizetype to = std::max(anchor, cursor);
    const int line = text.lineAt(from);
    const QString before = text.text().mid(text.lineStart(line), from - text.lineStart(line));
    const QString indent = leadingWhitespace(text.lineText(line));
    const QString ending = text.dominantLineEnding();
    QString inserted = ending + indent;
    if (opensBlock(before))
        inserted += unit;
    const qsizetype cursorAfter = from + inserted.size();
    const QChar previous = charAt(text.text(), from - 1);
    const QChar next = charAt(text.text(), to);
    if (!previous.isNull() && (previous == u'{' || previous == u'(' || previous == u'[') &&
        next == closerFor(previous))
        inserted += ending + indent;
    return {{from, text.text().mid(from, to - from), inserted}, cursorAfter};
}

std::optional<Action> outdentClosing(const TPScriptText &text, qsizetype cursor,
                                     const QString &unit)
{
    static const QStringList closing = {QStringLiteral("end"), QStringLiteral("else"),
                                        QStringLiteral("elseif"), QStringLiteral("until"),
                                        QStringLiteral("}")};
    const int line = text.lineAt(cursor);
    const QString lineText = text.lineText(line);
    const QString indent = leadingWhitespace(lineText);
    const qsizetype column = cursor - text.lineStart(line);
    const QString word = lineText.mid(indent.size(), column - indent.size());
    if (indent.size() < unit.size() || !indent.endsWith(unit) || !closing.contains(word) ||
        !lineText.mid(column).trimmed().isEmpty())
        return std::nullopt;
    for (int above = line - 1; above >= 0; --above) {
        const QString previous = text.lineText(above);
        if (previous.trimmed().isEmpty())
            continue;
        if (leadingWhitespace(previous) != indent)
            return std::nullopt;
        const qsizetype from = text.lineStart(line) + indent.size() - unit.size();
        return Action{{from, unit, QString()}, cursor - unit.size()};
    }
    return std::nullopt;
}

std::optional<Action> typed(const TPScriptText &text, qsizetype anchor, qsizetype cursor,
                            QChar character)
{
    if (anchor != cursor)
        return std::nullopt;
    const QString &all = text.text();
    const QChar next = charAt(all, cursor);
    if (kClosers.contains(character) && next == character)
        return Action{{cursor, {}, {}}, cursor + 1};
    const QChar closer = closerFor(character);
    if (closer.isNull())
        return std::nullopt;
    // Pair only where nothing is glued on the right, and quotes not after a word or escape.
    const bool freeRight =
        next.isNull() || next.isSpace() || kClosers.contains(next) || next == u',' || next == u';';
    const QChar previous = charAt(all, cursor - 1);
    const bool quote = character == u'"' || character == u'\'';
    if (!freeRight || (quote && (previous.isLetterOrNumber() || previous == u'\\' ||
                                 previous == u'_' || previous == character)))
        return std::nullopt;
    return Action{{cursor, {}, QString(character) + closer}, cursor + 1};
}

std::optional<Action> backspace(const TPScriptText &text, qsizetype anchor, qsizetype cursor)
{
    const QChar previous = charAt(text.text(), cursor - 1);
    if (anchor != cursor || previous.isNull() || closerFor(previous).isNull() ||
        charAt(text.text(), cursor) != closerFor(previous))
        return std::nullopt;
    return Action{{cursor - 1, text.text().mid(cursor - 1, 2), {}}, cursor - 1};
}

namespace {

std::pair<int, int> touchedLines(const TPScriptText &text, qsizetype anchor, qsizetype cursor)
{
    const qsizetype from = std::min(anchor, cursor);
    qsizetype to = std::max(anchor, cursor);
    const int first = text.lineAt(from);
    int last = text.lineAt(to);
    // A selection that ends at a line's start does not take that line along.
    if (last > first && to == text.lineStart(last))
        --last;
    return {first, last};
}

} // namespace

QList<TPTextEdit> indentLines(const TPScriptText &text, qsizetype anchor, qsizetype cursor,
                              const QString &unit)
{
    const auto [first, last] = touchedLines(text, anchor, cursor);
    QList<TPTextEdit> edits;
    // From the last line up, so that earlier offsets stay valid.
    for (int line = last; line >= first; --line)
        edits.append({text.lineStart(line), {}, unit});
    return edits;
}

QList<TPTextEdit> outdentLines(const TPScriptText &text, qsizetype anchor, qsizetype cursor,
                               const QString &unit)
{
    const auto [first, last] = touchedLines(text, anchor, cursor);
    QList<TPTextEdit> edits;
    for (int line = last; line >= first; --line) {
        const QString lineText = text.lineText(line);
        qsizetype width = 0;
        if (lineText.startsWith(u'\t')) {
            width = 1;
        } else {
            while (width < unit.size() && width < lineText.size() && lineText.at(width) == u' ')
                ++width;
        }
        if (width > 0)
            edits.append({text.lineStart(line), lineText.left(width), {}});
    }
    return edits;
}

} // namespace TPCodeEditRules
