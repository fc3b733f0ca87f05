#include "editing/tpluahighlighter.h"

#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QTimer>

#include <algorithm>

namespace {

const QColor kKeyword(1, 0, 0);
const QColor kString(2, 0, 0);
const QColor kComment(3, 0, 0);
const QColor kNumber(4, 0, 0);
const QColor kFunction(5, 0, 0);

} // namespace

class TestTPLuaHighlighter : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTextDocument> m_document;
    TPLuaHighlighter *m_highlighter = nullptr;

    void colour(const QString &text)
    {
        m_document = std::make_unique<QTextDocument>();
        m_document->documentLayout();
        m_highlighter = new TPLuaHighlighter(m_document.get());
        m_highlighter->setColor(TPLuaHighlighter::Keyword, kKeyword);
        m_highlighter->setColor(TPLuaHighlighter::String, kString);
        m_highlighter->setColor(TPLuaHighlighter::Comment, kComment);
        m_highlighter->setColor(TPLuaHighlighter::Number, kNumber);
        m_highlighter->setColor(TPLuaHighlighter::FunctionName, kFunction);
        m_highlighter->colourFromTop();
        m_document->setPlainText(text);
        QTRY_VERIFY(!m_highlighter->isColouring());
    }

    // The colour of the character at `column` of `line`, invalid when it has none.
    QColor colourAt(int line, int column) const
    {
        const QTextBlock block = m_document->findBlockByNumber(line);
        for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
            if (column >= range.start && column < range.start + range.length)
                return range.format.foreground().color();
        }
        return QColor();
    }

    // A fresh document of 20,000 lines that each start with a keyword, given whole while
    // its first colouring pass is due: the pass then runs slice by slice.
    void startColouringALongFile()
    {
        m_document = std::make_unique<QTextDocument>();
        m_document->documentLayout();
        m_highlighter = new TPLuaHighlighter(m_document.get());
        m_highlighter->setColor(TPLuaHighlighter::Keyword, kKeyword);
        QString text;
        for (int i = 0; i < 20000; ++i)
            text += QStringLiteral("local v%1 = %1\n").arg(i);
        m_highlighter->colourFromTop();
        m_document->setPlainText(text);
    }

private slots:
    void eachKindOfTokenHasItsColour()
    {
        colour(QStringLiteral("local function go(n) return n + 0x1F end -- done\n"
                              "go(\"a\\\"b\", 'c', 3.5e-2)"));
        QCOMPARE(colourAt(0, 0), kKeyword);   // local
        QCOMPARE(colourAt(0, 6), kKeyword);   // function
        QCOMPARE(colourAt(0, 15), kFunction); // go
        QCOMPARE(colourAt(0, 33), kNumber);   // 0x1F
        QCOMPARE(colourAt(0, 42), kComment);  // -- done
        QCOMPARE(colourAt(1, 0), kFunction);  // go(...)
        QCOMPARE(colourAt(1, 3), kString);    // "a\"b"
        QCOMPARE(colourAt(1, 8), kString);    // the escaped quote stays in the string
        QCOMPARE(colourAt(1, 12), kString);   // 'c'
        QCOMPARE(colourAt(1, 17), kNumber);   // 3.5e-2
        QCOMPARE(colourAt(0, 18), QColor());  // n is a plain name
    }

    void declaredPathNamesAreFunctionNames()
    {
        colour(QStringLiteral("function farm.harvest:run() end"));
        QCOMPARE(colourAt(0, 9), kFunction);
        QCOMPARE(colourAt(0, 22), kFunction);
    }

    void longStringsAndCommentsSpanLines()
    {
        colour(QStringLiteral("s = [==[ one\n]] still\n]==] x = 1\n--[[ c\nc ]] y"));
        QCOMPARE(colourAt(0, 4), kString);
        QCOMPARE(colourAt(1, 3), kString); // "]]" does not close a level-2 bracket
        QCOMPARE(colourAt(2, 0), kString);
        QCOMPARE(colourAt(2, 9), kNumber);
        QCOMPARE(colourAt(3, 0), kComment);
        QCOMPARE(colourAt(4, 0), kComment);
        QCOMPARE(colourAt(4, 5), QColor());
    }

    void anEditRecoloursOnlyTheLinesItAffects()
    {
        QString text;
        for (int i = 0; i < 2000; ++i)
            text += QStringLiteral("x = %1\n").arg(i);
        colour(text);
        QSignalSpy changes(m_document.get(), &QTextDocument::contentsChange);
        QTextCursor(m_document->findBlockByNumber(1000)).insertText(QStringLiteral("local "));
        // The edit itself and the one line it re-coloured.
        QVERIFY(changes.size() <= 3);
        for (const QList<QVariant> &change : changes)
            QVERIFY(m_document->findBlock(change.at(0).toInt()).blockNumber() >= 999);
        QCOMPARE(colourAt(1000, 0), kKeyword);
    }

    void linesAddedAfterTheFirstPassAreColouredAsTyped()
    {
        colour(QStringLiteral("x = 1"));
        QTextCursor end(m_document.get());
        end.movePosition(QTextCursor::End);
        end.insertText(QStringLiteral("\nlocal y\nwhile"));
        QCOMPARE(colourAt(1, 0), kKeyword);
        QCOMPARE(colourAt(2, 0), kKeyword);
        QTextCursor(m_document.get()).insertText(QStringLiteral("if\n"));
        QCOMPARE(colourAt(0, 0), kKeyword);
        QCOMPARE(colourAt(3, 0), kKeyword);
    }

    void linesRemovedAboveThePassDoNotMakeItSkipALine()
    {
        startColouringALongFile();
        // One slice has run; then the first ten lines go while the pass is under way.
        QTRY_VERIFY(colourAt(0, 0) == kKeyword);
        QVERIFY(m_highlighter->isColouring());
        QTextCursor cut(m_document.get());
        cut.movePosition(QTextCursor::Down, QTextCursor::KeepAnchor, 10);
        cut.removeSelectedText();
        QTRY_VERIFY_WITH_TIMEOUT(!m_highlighter->isColouring(), 30000);
        for (int line = 0; line < m_document->blockCount() - 1; ++line)
            QVERIFY2(colourAt(line, 0) == kKeyword, qPrintable(QString::number(line)));
    }

    void openingALongCommentRecoloursTheLinesBelow()
    {
        colour(QStringLiteral("a = 1\nb = 2\nc = 3"));
        QTextCursor(m_document->findBlockByNumber(0)).insertText(QStringLiteral("--[["));
        QCOMPARE(colourAt(1, 0), kComment);
        QCOMPARE(colourAt(2, 0), kComment);
    }

    void aLongFileIsColouredInSlicesOfAtMost2000LinesWithEventsBetween()
    {
        startColouringALongFile();
        // Nothing was coloured while the text was set; the slices come from the event loop.
        QCOMPARE(colourAt(19999, 0), QColor());
        QVERIFY(m_highlighter->isColouring());
        // Every line starts with a keyword and the pass colours from the top, so the coloured
        // lines are the ones above the first plain one. A zero timer, which runs between any
        // two slices, sees how far each slice went.
        const auto colouredLines = [this] {
            int low = 0;
            int high = m_document->blockCount() - 1;
            while (low < high) {
                const int middle = (low + high) / 2;
                if (colourAt(middle, 0) == kKeyword)
                    low = middle + 1;
                else
                    high = middle;
            }
            return low;
        };
        QList<int> steps;
        int seen = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, this, [&] {
            const int now = colouredLines();
            if (now > seen)
                steps.append(now - seen);
            seen = now;
        });
        ticker.start(0);
        QTRY_COMPARE_WITH_TIMEOUT(colourAt(19999, 0), kKeyword, 30000);
        ticker.stop();
        QVERIFY2(steps.size() >= 10, qPrintable(QString::number(steps.size())));
        QVERIFY2(*std::max_element(steps.begin(), steps.end()) <= 2000,
                 qPrintable(QString::number(*std::max_element(steps.begin(), steps.end()))));
    }
};

QTEST_MAIN(TestTPLuaHighlighter)
#include "tst_tpluahighlighter.moc"
