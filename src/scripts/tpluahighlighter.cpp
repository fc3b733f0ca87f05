#include "tpluahighlighter.h"

#include <QElapsedTimer>
#include <QSet>
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
    startPass();
}

void TPLuaHighlighter::colourFromTop()
{
    m_colouredThrough = -1;
    startPass();
}

void TPLuaHighlighter::startPass()
{
    m_nextLine = 0;
    m_slicer.start();
}

void TPLuaHighlighter::colourNextSlice()
{
    QTextDocument *doc = document();
    QElapsedTimer slice;
    slice.start();
    while (doc && slice.elapsed() < kSliceMs) {
        const QTextBlock block = doc->findBlockByNumber(m_nextLine);
        if (!block.isValid())
            break;
        // Lines not yet reached keep the state -1, so colouring this one stops at the next.
        m_colouredThrough = std::max(m_colouredThrough, m_nextLine);
        ++m_nextLine;
        rehighlightBlock(block);
    }
    if (!doc || m_nextLine >= doc->blockCount())
        m_slicer.stop();
}

qsizetype TPLuaHighlighter::finishLongBracket(const QString &text, qsizetype from, int level,
                                              bool comment)
{
    const QString closing = u']' + QString(level, u'=') + u']';
    const qsizetype end = text.indexOf(closing, from);
    const qsizetype stop = end < 0 ? text.size() : end + closing.size();
    setFormat(int(from), int(stop - from), m_formats[comment ? Comment : String]);
    if (end < 0) {
        setCurrentBlockState(longBracketState(level, comment));
        return -1;
    }
    return stop;
}

void TPLuaHighlighter::highlightBlock(const QString &text)
{
    if (currentBlock().blockNumber() > m_colouredThrough) {
        setCurrentBlockState(-1);
        return;
    }
    setCurrentBlockState(0);
    qsizetype at = 0;
    const int previous = previousBlockState();
    if (previous > 0) {
        at = finishLongBracket(text, 0, (previous - 1) / 2, (previous - 1) % 2 == 1);
        if (at < 0)
            return;
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
                at = finishLongBracket(text, at, level, true);
                if (at < 0)
                    return;
                continue;
            }
            setFormat(int(at), int(text.size() - at), m_formats[Comment]);
            return;
        }
        if (const int level = longBracketLevel(text, at); level >= 0) {
            at = finishLongBracket(text, at, level, false);
            if (at < 0)
                return;
            continue;
        }
        if (c == u'"' || c == u'\'') {
            qsizetype end = at + 1;
            while (end < text.size() && text.at(end) != c)
                end += text.at(end) == u'\\' ? 2 : 1;
            end = std::min(end + 1, text.size());
            setFormat(int(at), int(end - at), m_formats[String]);
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
            setFormat(int(at), int(end - at), m_formats[Number]);
            at = end;
            continue;
        }
        if (isNameStart(c)) {
            qsizetype end = at + 1;
            while (end < text.size() && isNameChar(text.at(end)))
                ++end;
            const QString word = text.mid(at, end - at);
            if (keywords().contains(word)) {
                setFormat(int(at), int(end - at), m_formats[Keyword]);
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
                setFormat(int(at), int(nameEnd - at), m_formats[FunctionName]);
            afterFunctionKeyword = false;
            at = nameEnd;
            continue;
        }
        afterFunctionKeyword = false;
        ++at;
    }
}
