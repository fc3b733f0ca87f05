#include "editing/tpluahighlighter.h"

#include <QElapsedTimer>
#include <QSet>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace {

// A slice of the first pass; a frame at 60 Hz has 16 ms.
constexpr qint64 kSliceMs = 4;

bool isNameStart(QChar c)
{
    return c.isLetter() || c == u'_';
}

bool isNameChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

const QSet<QString> &keywords()
{
    static const QSet<QString> words = {
        QStringLiteral("and"),   QStringLiteral("break"),  QStringLiteral("do"),
        QStringLiteral("else"),  QStringLiteral("elseif"), QStringLiteral("end"),
        QStringLiteral("false"), QStringLiteral("for"),    QStringLiteral("function"),
        QStringLiteral("goto"),  QStringLiteral("if"),     QStringLiteral("in"),
        QStringLiteral("local"), QStringLiteral("nil"),    QStringLiteral("not"),
        QStringLiteral("or"),    QStringLiteral("repeat"), QStringLiteral("return"),
        QStringLiteral("then"),  QStringLiteral("true"),   QStringLiteral("until"),
        QStringLiteral("while")};
    return words;
}

// The level of a long bracket "[", "="*level, "[" opening at `at`, or -1 when none does.
int longBracketLevel(const QString &text, qsizetype at)
{
    if (at >= text.size() || text.at(at) != u'[')
        return -1;
    qsizetype next = at + 1;
    while (next < text.size() && text.at(next) == u'=')
        ++next;
    return next < text.size() && text.at(next) == u'[' ? int(next - at - 1) : -1;
}

} // namespace

TPLuaHighlighter::TPLuaHighlighter(QTextDocument *document) : QSyntaxHighlighter(document)
{
    m_slicer.setInterval(0);
    connect(&m_slicer, &QTimer::timeout, this, &TPLuaHighlighter::colourNextSlice);
    colourFromTop();
}

void TPLuaHighlighter::setColor(Token token, const QColor &color)
{
    if (m_formats[token].foreground().color() == color)
        return;
    m_formats[token].setForeground(color);
    if (token == Keyword || token == FunctionName)
        m_formats[token].setFontWeight(QFont::DemiBold);
    if (token == Comment)
        m_formats[token].setFontItalic(true);
    colourFromTop();
}

void TPLuaHighlighter::colourFromTop()
{
    QTextDocument *doc = document();
    if (!doc)
        return;
    // Every line forgets its state, so each step of the pass flows through its lines.
    for (QTextBlock block = doc->begin(); block.isValid(); block = block.next())
        block.setUserState(-1);
    m_frontier = QTextCursor(doc);
    // Text inserted at the frontier, such as a whole new text, is not coloured yet.
    m_frontier.setKeepPositionOnInsert(true);
    m_slicer.start();
}

bool TPLuaHighlighter::isColoured(const QTextBlock &block) const
{
    return !m_slicer.isActive() || block.position() < m_frontier.position();
}

void TPLuaHighlighter::colourNextSlice()
{
    QTextDocument *doc = document();
    if (!doc) {
        m_slicer.stop();
        return;
    }
    // Formats are set on the lines' layouts directly and the document is told once per
    // slice: told line by line, its layout would walk the whole document for every line.
    QElapsedTimer slice;
    slice.start();
    QTextBlock block = doc->findBlock(m_frontier.position());
    const int from = block.isValid() ? block.position() : 0;
    int to = from;
    int state = block.previous().isValid() ? block.previous().userState() : -1;
    for (int line = 0; block.isValid() && line < m_linesPerSlice; ++line) {
        QList<QTextLayout::FormatRange> ranges;
        for (const Span &span : tokenize(block.text(), state, &state))
            ranges.append({span.start, span.length, m_formats[span.token]});
        // Later ranges are merged over earlier ones: a mark keeps the colour of its text.
        ranges.append(markRanges(block.blockNumber()));
        block.layout()->setFormats(ranges);
        block.setUserState(state);
        to = block.position() + block.length();
        block = block.next();
    }
    m_frontier.setPosition(block.isValid() ? block.position() : doc->characterCount() - 1);
    if (to > from) {
        // Inside an edit block the document also reports the change, as it does for the
        // highlighter's own re-colouring, so that a view of it redraws the lines.
        QTextCursor edit(doc);
        edit.beginEditBlock();
        doc->markContentsDirty(from, to - from);
        edit.endEditBlock();
    }
    // Most of a slice's cost is the layout of its lines, which depends on the font and the
    // width: the next slice takes as many lines as fit in the time.
    const qint64 spent = std::max<qint64>(slice.elapsed(), 1);
    m_linesPerSlice = int(std::clamp<qint64>(m_linesPerSlice * kSliceMs / spent, 20, 2000));
    if (!block.isValid())
        m_slicer.stop();
}

namespace {

// One line's tokens, scanned left to right: each kind of token has a reader that takes it
// from the current position when it starts there.
class LineScanner
{
public:
    using Span = TPLuaHighlighter::Span;
    using Token = TPLuaHighlighter::Token;

    explicit LineScanner(const QString &text) : m_text(text) {}

    // The tokens of the line that starts in `previousState`; `endState` is where it ends.
    QList<Span> scan(int previousState, int *endState)
    {
        *endState = 0;
        if (previousState > 0 &&
            !finishLongBracket(0, (previousState - 1) / 2, (previousState - 1) % 2 == 1))
            return stopWith(endState);
        while (m_at < m_text.size()) {
            if (m_text.at(m_at).isSpace()) {
                ++m_at;
                continue;
            }
            if (readComment() || readLongString()) {
                if (m_open)
                    return stopWith(endState);
                continue;
            }
            if (readQuotedString() || readNumber() || readName())
                continue;
            m_afterFunctionKeyword = false;
            ++m_at;
        }
        return m_spans;
    }

private:
    bool startsAt(qsizetype at, QChar c) const { return at < m_text.size() && m_text.at(at) == c; }

    void add(qsizetype start, qsizetype end, Token token)
    {
        m_spans.append({int(start), int(end - start), token});
    }

    QList<Span> stopWith(int *endState)
    {
        *endState = m_openState;
        return m_spans;
    }

    // Colours from `from` up to the long bracket's end. False, and the line's end state set,
    // when the bracket stays open past the line.
    bool finishLongBracket(qsizetype from, int level, bool comment)
    {
        const QString closing = u']' + QString(level, u'=') + u']';
        const qsizetype end = m_text.indexOf(closing, from);
        const qsizetype stop = end < 0 ? m_text.size() : end + closing.size();
        add(from, stop, comment ? TPLuaHighlighter::Comment : TPLuaHighlighter::String);
        m_at = stop;
        if (end < 0) {
            m_open = true;
            m_openState = TPLuaHighlighter::longBracketState(level, comment);
            return false;
        }
        return true;
    }

    // "--" to the end of the line, or a long comment "--[[ ... ]]".
    bool readComment()
    {
        if (!startsAt(m_at, u'-') || !startsAt(m_at + 1, u'-'))
            return false;
        if (const int level = longBracketLevel(m_text, m_at + 2); level >= 0) {
            finishLongBracket(m_at, level, true);
            return true;
        }
        add(m_at, m_text.size(), TPLuaHighlighter::Comment);
        m_at = m_text.size();
        return true;
    }

    // "[[ ... ]]", "[=[ ... ]=]" and so on.
    bool readLongString()
    {
        const int level = longBracketLevel(m_text, m_at);
        if (level < 0)
            return false;
        finishLongBracket(m_at, level, false);
        return true;
    }

    // "..." or '...', with backslash escapes; an unclosed one ends with the line.
    bool readQuotedString()
    {
        const QChar quote = m_text.at(m_at);
        if (quote != u'"' && quote != u'\'')
            return false;
        qsizetype end = m_at + 1;
        while (end < m_text.size() && m_text.at(end) != quote)
            end += m_text.at(end) == u'\\' ? 2 : 1;
        end = std::min(end + 1, m_text.size());
        add(m_at, end, TPLuaHighlighter::String);
        m_at = end;
        return true;
    }

    // Decimal and hexadecimal numbers, with fractions and exponents ("1e-3", "0x1p+4").
    bool readNumber()
    {
        const QChar c = m_text.at(m_at);
        if (!c.isDigit() &&
            !(c == u'.' && m_at + 1 < m_text.size() && m_text.at(m_at + 1).isDigit()))
            return false;
        qsizetype end = m_at + 1;
        while (end < m_text.size()) {
            const QChar d = m_text.at(end);
            const QChar before = m_text.at(end - 1).toLower();
            const bool exponentSign =
                (d == u'+' || d == u'-') && (before == u'e' || before == u'p');
            if (!(isNameChar(d) || d == u'.' || exponentSign))
                break;
            ++end;
        }
        add(m_at, end, TPLuaHighlighter::Number);
        m_at = end;
        return true;
    }

    // A keyword, or a name: a function's when it follows "function" (a path such as a.b:c
    // included) or is called.
    bool readName()
    {
        if (!isNameStart(m_text.at(m_at)))
            return false;
        qsizetype end = m_at + 1;
        while (end < m_text.size() && isNameChar(m_text.at(end)))
            ++end;
        const QString word = m_text.mid(m_at, end - m_at);
        if (keywords().contains(word)) {
            add(m_at, end, TPLuaHighlighter::Keyword);
            m_afterFunctionKeyword = word == QLatin1String("function");
            m_at = end;
            return true;
        }
        qsizetype nameEnd = end;
        if (m_afterFunctionKeyword) {
            while (nameEnd + 1 < m_text.size() &&
                   (m_text.at(nameEnd) == u'.' || m_text.at(nameEnd) == u':') &&
                   isNameStart(m_text.at(nameEnd + 1))) {
                nameEnd += 2;
                while (nameEnd < m_text.size() && isNameChar(m_text.at(nameEnd)))
                    ++nameEnd;
            }
        }
        qsizetype after = nameEnd;
        while (after < m_text.size() && m_text.at(after) == u' ')
            ++after;
        if (m_afterFunctionKeyword || startsAt(after, u'('))
            add(m_at, nameEnd, TPLuaHighlighter::FunctionName);
        m_afterFunctionKeyword = false;
        m_at = nameEnd;
        return true;
    }

    const QString &m_text;
    qsizetype m_at = 0;
    QList<Span> m_spans;
    bool m_afterFunctionKeyword = false;
    bool m_open = false;
    int m_openState = 0;
};

} // namespace

QList<TPLuaHighlighter::Span> TPLuaHighlighter::tokenize(const QString &text, int previousState,
                                                         int *endState)
{
    return LineScanner(text).scan(previousState, endState);
}

void TPLuaHighlighter::highlightBlock(const QString &text)
{
    if (!isColoured(currentBlock())) {
        setCurrentBlockState(-1);
        return;
    }
    int state = 0;
    for (const Span &span : tokenize(text, previousBlockState(), &state))
        setFormat(span.start, span.length, m_formats[span.token]);
    for (const QTextLayout::FormatRange &mark : markRanges(currentBlock().blockNumber())) {
        for (int at = mark.start; at < mark.start + mark.length; ++at) {
            QTextCharFormat merged = format(at);
            merged.merge(mark.format);
            setFormat(at, 1, merged);
        }
    }
    setCurrentBlockState(state);
}

QList<QTextLayout::FormatRange> TPLuaHighlighter::markRanges(int line) const
{
    QList<QTextLayout::FormatRange> ranges;
    const auto found = m_marks.constFind(line);
    if (found != m_marks.cend()) {
        for (const auto &[column, length] : *found)
            ranges.append({column, length, m_markFormat});
    }
    return ranges;
}

void TPLuaHighlighter::setMarks(const LineMarks &marks, const QColor &background)
{
    QSet<int> changed;
    if (m_markFormat.background().color() != background) {
        m_markFormat.setBackground(background);
        for (auto it = m_marks.cbegin(); it != m_marks.cend(); ++it)
            changed.insert(it.key());
    }
    for (auto it = m_marks.cbegin(); it != m_marks.cend(); ++it) {
        if (marks.value(it.key()) != it.value())
            changed.insert(it.key());
    }
    for (auto it = marks.cbegin(); it != marks.cend(); ++it) {
        if (!m_marks.contains(it.key()))
            changed.insert(it.key());
    }
    m_marks = marks;
    QTextDocument *doc = document();
    if (!doc || changed.isEmpty())
        return;
    // One edit block: the document reports the lines' changes once.
    QTextCursor edit(doc);
    edit.beginEditBlock();
    for (const int line : std::as_const(changed)) {
        const QTextBlock block = doc->findBlockByNumber(line);
        if (block.isValid() && isColoured(block))
            rehighlightBlock(block);
    }
    edit.endEditBlock();
}
