#include "tpluahighlighter.h"

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

QList<TPLuaHighlighter::Span> TPLuaHighlighter::tokenize(const QString &text, int previousState,
                                                         int *endState)
{
    QList<Span> spans;
    *endState = 0;
    const auto add = [&spans](qsizetype start, qsizetype end, Token token) {
        spans.append({int(start), int(end - start), token});
    };
    // Colours up to the long bracket's end; returns where it ends, or -1 when the bracket
    // stays open past the line.
    const auto finishLongBracket = [&](qsizetype from, int level, bool comment) -> qsizetype {
        const QString closing = u']' + QString(level, u'=') + u']';
        const qsizetype end = text.indexOf(closing, from);
        const qsizetype stop = end < 0 ? text.size() : end + closing.size();
        add(from, stop, comment ? Comment : String);
        if (end < 0) {
            *endState = longBracketState(level, comment);
            return -1;
        }
        return stop;
    };
    qsizetype at = 0;
    if (previousState > 0) {
        at = finishLongBracket(0, (previousState - 1) / 2, (previousState - 1) % 2 == 1);
        if (at < 0)
            return spans;
    }
    bool afterFunctionKeyword = false;
    while (at < text.size()) {
        const QChar c = text.at(at);
        if (c.isSpace()) {
            ++at;
            continue;
        }
        if (c == u'-' && at + 1 < text.size() && text.at(at + 1) == u'-') {
            const int level = longBracketLevel(text, at + 2);
            if (level >= 0) {
                at = finishLongBracket(at, level, true);
                if (at < 0)
                    return spans;
                continue;
            }
            add(at, text.size(), Comment);
            return spans;
        }
        if (const int level = longBracketLevel(text, at); level >= 0) {
            at = finishLongBracket(at, level, false);
            if (at < 0)
                return spans;
            continue;
        }
        if (c == u'"' || c == u'\'') {
            qsizetype end = at + 1;
            while (end < text.size() && text.at(end) != c)
                end += text.at(end) == u'\\' ? 2 : 1;
            end = std::min(end + 1, text.size());
            add(at, end, String);
            at = end;
            continue;
        }
        if (c.isDigit() || (c == u'.' && at + 1 < text.size() && text.at(at + 1).isDigit())) {
            qsizetype end = at + 1;
            while (end < text.size()) {
                const QChar d = text.at(end);
                const QChar before = text.at(end - 1).toLower();
                const bool exponentSign =
                    (d == u'+' || d == u'-') && (before == u'e' || before == u'p');
                if (!(isNameChar(d) || d == u'.' || exponentSign))
                    break;
                ++end;
            }
            add(at, end, Number);
            at = end;
            continue;
        }
        if (isNameStart(c)) {
            qsizetype end = at + 1;
            while (end < text.size() && isNameChar(text.at(end)))
                ++end;
            const QString word = text.mid(at, end - at);
            if (keywords().contains(word)) {
                add(at, end, Keyword);
                afterFunctionKeyword = word == QLatin1String("function");
                at = end;
                continue;
            }
            // A declared name may be a path: function a.b:c().
            qsizetype nameEnd = end;
            if (afterFunctionKeyword) {
                while (nameEnd + 1 < text.size() &&
                       (text.at(nameEnd) == u'.' || text.at(nameEnd) == u':') &&
                       isNameStart(text.at(nameEnd + 1))) {
                    nameEnd += 2;
                    while (nameEnd < text.size() && isNameChar(text.at(nameEnd)))
                        ++nameEnd;
                }
            }
            qsizetype after = nameEnd;
            while (after < text.size() && text.at(after) == u' ')
                ++after;
            const bool called = after < text.size() && text.at(after) == u'(';
            if (afterFunctionKeyword || called)
                add(at, nameEnd, FunctionName);
            afterFunctionKeyword = false;
            at = nameEnd;
            continue;
        }
        afterFunctionKeyword = false;
        ++at;
    }
    return spans;
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
    setCurrentBlockState(state);
}
