#pragma once

#include <QColor>
#include <QHash>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextLayout>
#include <QTimer>

// Colours Lua in a text document: keywords, strings (long brackets too), comments (long
// ones too), numbers and the names of functions declared or called. Like every syntax
// highlighter it re-colours only from the changed line until a line ends in the same state
// as before. A fresh document is coloured from the top in slices of a few milliseconds, so
// a long file never holds up a frame.
class TPLuaHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    enum Token { Keyword, String, Comment, Number, FunctionName, TokenCount };

    explicit TPLuaHighlighter(QTextDocument *document);

    // The colour of each kind of token, from the app's theme.
    void setColor(Token token, const QColor &color);
    // Colours the whole document again, from the top, slice by slice. Call it before the
    // document's whole text is replaced: the new lines are then left uncoloured until the
    // slices reach them, so replacing the text costs no colouring at all.
    void colourFromTop();
    bool isColouring() const { return m_slicer.isActive(); }

    // Spans of a line as (column, length).
    using LineMarks = QHash<int, QList<std::pair<int, int>>>;
    // Marks spans of lines with `background` over their colours (the matches of a search);
    // only the lines whose marks change are coloured again.
    void setMarks(const LineMarks &marks, const QColor &background);
    const LineMarks &marks() const { return m_marks; }

    // A line's colouring state: 0 in code, otherwise inside a long string or comment whose
    // bracket has `level` equals signs.
    static int longBracketState(int level, bool comment) { return 1 + level * 2 + int(comment); }

    struct Span
    {
        int start;
        int length;
        Token token;
    };
    // The tokens of one line that starts in `previousState`, and the state it ends in.
    static QList<Span> tokenize(const QString &line, int previousState, int *endState);

protected:
    void highlightBlock(const QString &text) override;

private:
    void colourNextSlice();
    // Whether the first pass has reached the line; once it has ended, every line is, however
    // many lines were typed since.
    bool isColoured(const QTextBlock &block) const;

    // The line's marks as format ranges over its colours.
    QList<QTextLayout::FormatRange> markRanges(int line) const;

    QTextCharFormat m_formats[TokenCount];
    LineMarks m_marks;
    QTextCharFormat m_markFormat;
    QTimer m_slicer;
    // The start of the first line the first pass has not reached. A cursor moves with every
    // edit, so lines typed or removed above it never shift the pass off its line.
    QTextCursor m_frontier;
    // How many lines a slice colours.
    int m_linesPerSlice = 100;
};
