#include "editing/tpluaoutline.h"

#include "editing/tpluahighlighter.h"

#include <QRegularExpression>

namespace TPLuaOutline {

namespace {

// What stands before "function" in "name = function" or "local name = function".
const QRegularExpression &assignedName()
{
    static const QRegularExpression pattern(
        QStringLiteral(R"((?:^|[;\s])(?:local\s+)?([A-Za-z_][\w]*(?:[.:][A-Za-z_]\w*)*)\s*=\s*$)"));
    return pattern;
}

bool isKeyword(const QString &line, const TPLuaHighlighter::Span &span, QLatin1StringView word)
{
    return span.token == TPLuaHighlighter::Keyword &&
           QStringView(line).mid(span.start, span.length) == word;
}

} // namespace

QList<Entry> functions(const TPScriptText &text)
{
    QList<Entry> entries;
    int state = 0;
    for (int line = 0; line < text.lineCount(); ++line) {
        const QString lineText = text.lineText(line);
        const QList<TPLuaHighlighter::Span> spans =
            TPLuaHighlighter::tokenize(lineText, state, &state);
        for (qsizetype i = 0; i < spans.size(); ++i) {
            if (!isKeyword(lineText, spans.at(i), QLatin1StringView("function")))
                continue;
            // "function name": the scanner marks the declared name, a path included.
            if (i + 1 < spans.size() && spans.at(i + 1).token == TPLuaHighlighter::FunctionName) {
                const TPLuaHighlighter::Span &name = spans.at(i + 1);
                entries.append({lineText.mid(name.start, name.length), line + 1});
                continue;
            }
            // "name = function": the code since the token before the keyword.
            const int codeStart = i > 0 ? spans.at(i - 1).start + spans.at(i - 1).length : 0;
            const QString before = lineText.mid(codeStart, spans.at(i).start - codeStart);
            const QRegularExpressionMatch match = assignedName().match(before);
            if (match.hasMatch())
                entries.append({match.captured(1), line + 1});
        }
    }
    return entries;
}

} // namespace TPLuaOutline
