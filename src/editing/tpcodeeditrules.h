#pragma once

#include "editing/tpscripttext.h"

#include <optional>

// What a code editor does for a key beyond inserting it: the change to make and where the
// cursor goes after it. Pure functions over the exact text, so a test needs no view.
namespace TPCodeEditRules {

struct Action
{
    TPTextEdit edit;
    qsizetype cursor = 0;
};

// The indentation one level adds: a tab when most indented lines start with one, otherwise
// as many spaces as the smallest indentation in the file (2 to 8), 4 when nothing is indented.
QString indentUnit(const TPScriptText &text);
// The spaces and tabs a line starts with.
QString leadingWhitespace(const QString &line);
// True when a line, up to the cursor, opens a Lua block that the next line should indent:
// it ends with "then", "do", "else", "repeat", "function(...)", "{" or "(" outside a comment.
bool opensBlock(const QString &lineBeforeCursor);

// Enter at `cursor` (the selection from `anchor` replaced): a line break in the file's own
// ending, then the line's indentation, one level more after a block opener. Between an
// empty pair of brackets the closing bracket moves to a line of its own.
Action newLine(const TPScriptText &text, qsizetype anchor, qsizetype cursor, const QString &unit);

// A typed character: an opening bracket or quote also types its closing one, and a closing
// one typed right before the same character steps over it. Nothing when the character is
// typed as it is.
std::optional<Action> typed(const TPScriptText &text, qsizetype anchor, qsizetype cursor,
                            QChar character);

// After a character typed just before `cursor`: when the line up to the cursor is its
// indentation and then exactly "end", "else", "elseif", "until" or "}", nothing but blanks
// follows, and the line is indented as deep as the nearest line above it with text (where
// Enter put it), the line moves back one level, as auto-indent moved it in. Nothing
// otherwise.
std::optional<Action> outdentClosing(const TPScriptText &text, qsizetype cursor,
                                     const QString &unit);

// Backspace between an empty pair removes both halves.
std::optional<Action> backspace(const TPScriptText &text, qsizetype anchor, qsizetype cursor);

// Adds or removes one level of indentation on every line the selection touches.
QList<TPTextEdit> indentLines(const TPScriptText &text, qsizetype anchor, qsizetype cursor,
                              const QString &unit);
QList<TPTextEdit> outdentLines(const TPScriptText &text, qsizetype anchor, qsizetype cursor,
                               const QString &unit);

} // namespace TPCodeEditRules
