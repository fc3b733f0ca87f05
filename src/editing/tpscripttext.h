#pragma once

#include <QString>

#include <vector>

// One change to the exact text: at `offset`, `removed` was replaced by `inserted`.
struct TPTextEdit
{
    qsizetype offset = 0;
    QString removed;
    QString inserted;

    bool isNull() const { return removed.isEmpty() && inserted.isEmpty(); }
    // The change that takes the text back.
    TPTextEdit inverted() const { return {offset, inserted, removed}; }
};

// The script exactly as the engine gave it or the user typed it: every line ending, no-break
// space and byte-order mark kept. Beside it, where each line starts, counted the way the
// editor's text document splits text into blocks: a line ends at CR LF, CR, LF, U+2029,
// U+FDD0 or U+FDD1. U+2028 and every other character stay inside their line, one document
// character each. So a document position (block, column) names one offset here, and a line
// break is one document character whatever its length here.
class TPScriptText
{
public:
    TPScriptText();

    void setText(const QString &text);
    const QString &text() const { return m_text; }

    int lineCount() const { return int(m_lineStarts.size()); }
    qsizetype lineStart(int line) const { return m_lineStarts[size_t(line)]; }
    // Where the line's break begins (the text's end on the last line).
    qsizetype lineEnd(int line) const;
    QString lineText(int line) const;
    // The line that holds `offset` (an offset inside a line break belongs to its line).
    int lineAt(qsizetype offset) const;

    // The break that most lines ended with when the text was set; "\n" when none had one,
    // LF winning ties. New lines typed by the user take it.
    const QString &dominantLineEnding() const { return m_dominantEnding; }

    // The text as the document holds it: every line break is one U+2029.
    QString documentText() const;

    // Replaces `length` characters at `offset` with `inserted`. A range that would split a
    // CR LF pair is widened to hold the whole pair, so the document's lines and these lines
    // always agree. Returns the change as made.
    TPTextEdit replace(qsizetype offset, qsizetype length, const QString &inserted);
    // The change replace() would make, without making it.
    TPTextEdit widened(qsizetype offset, qsizetype length, const QString &inserted) const;
    TPTextEdit apply(const TPTextEdit &edit)
    {
        return replace(edit.offset, edit.removed.size(), edit.inserted);
    }

    // Applies a change the document reports: at (line, column), `removedUnits` document
    // characters were replaced by `documentText`, whose line breaks are U+2029. Text that
    // the document gives back unchanged stays as it was here, byte for byte, so a change of
    // formatting alone changes nothing. A new line break reuses, in order, the breaks that
    // the change removed when it removed as many, and otherwise takes the dominant ending.
    TPTextEdit applyDocumentChange(int line, int column, qsizetype removedUnits,
                                   const QString &documentText);

    // The offset reached by walking `units` document characters forward from `offset`.
    qsizetype offsetAfterUnits(qsizetype offset, qsizetype units) const;

private:
    // Length of the line break that starts at `offset`, 0 when none does.
    qsizetype breakLengthAt(qsizetype offset) const;
    void rebuildLines(int firstLine, qsizetype oldEnd, qsizetype delta);
    QString exactInsertion(const QString &documentText, const QStringList &removedBreaks,
                           qsizetype at, qsizetype end) const;

    QString countDominantLineEnding() const;

    QString m_text;
    std::vector<qsizetype> m_lineStarts;
    QString m_dominantEnding = QStringLiteral("\n");
};
