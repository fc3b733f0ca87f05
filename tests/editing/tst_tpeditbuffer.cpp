#include "editing/tpeditbuffer.h"

#include <QSignalSpy>
#include <QTest>

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

// The edit buffer alone, with no view: what each editing tool does to the exact text, where
// it leaves the cursor, and what one undo takes back.
class TestTPEditBuffer : public QObject
{
    Q_OBJECT

    std::unique_ptr<TPEditBuffer> m_buffer;

    TPEditBuffer *bufferWith(const QString &text, qsizetype cursor = 0)
    {
        m_buffer = std::make_unique<TPEditBuffer>();
        m_buffer->setText(text);
        m_buffer->select(cursor, cursor);
        return m_buffer.get();
    }

private slots:
    void cleanup() { m_buffer.reset(); }

    void undoAndRedoGiveBackExactBytes()
    {
        const QString original = u("a\r\nb\xc2\xa0\rc");
        TPEditBuffer *editor = bufferWith(original, 1);
        QVERIFY(!editor->canUndo());
        editor->newLine();
        editor->typeCharacter(u'x');
        QVERIFY(editor->canUndo());
        editor->undo();
        editor->undo();
        QCOMPARE(editor->text(), original);
        QVERIFY(editor->canRedo());
        editor->redo();
        QCOMPARE(editor->text(), u("a\r\n\r\nb\xc2\xa0\rc"));
    }
    void enterKeepsTheIndentation()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("    tap(1, 2)"), 13);
        editor->newLine();
        QCOMPARE(editor->text(), QStringLiteral("    tap(1, 2)\n    "));
        QCOMPARE(editor->selection().second, 18);
    }
    void enterAfterABlockOpenerIndentsOneLevelMore()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("for i = 1, 3 do"), 15);
        editor->newLine();
        QCOMPARE(editor->text(), QStringLiteral("for i = 1, 3 do\n    "));
        bufferWith(QStringLiteral("if x then -- note"), 17)->newLine();
        QCOMPARE(m_buffer->text(), QStringLiteral("if x then -- note\n    "));
        bufferWith(QStringLiteral("local f = function(a)"), 21)->newLine();
        QCOMPARE(m_buffer->text(), QStringLiteral("local f = function(a)\n    "));
    }
    void enterUsesTheFileLineEnding()
    {
        TPEditBuffer *editor = bufferWith(u("a\r\nb\r\n"), 1);
        editor->newLine();
        QCOMPARE(editor->text(), u("a\r\n\r\nb\r\n"));
    }
    void enterBetweenBracketsOpensAnIndentedLine()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("t = {}"), 5);
        editor->newLine();
        QCOMPARE(editor->text(), QStringLiteral("t = {\n    \n}"));
        QCOMPARE(editor->selection().second, 10);
    }
    void openingBracketsAndQuotesTypeTheirPair()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("print"), 5);
        editor->typeCharacter(u'(');
        QCOMPARE(editor->text(), QStringLiteral("print()"));
        QCOMPARE(editor->selection().second, 6);
        editor->typeCharacter(u'"');
        QCOMPARE(editor->text(), QStringLiteral("print(\"\")"));
        QCOMPARE(editor->selection().second, 7);
    }
    void noPairIsTypedBeforeAWord()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("x"), 0);
        editor->typeCharacter(u'(');
        QCOMPARE(editor->text(), QStringLiteral("(x"));
        bufferWith(QStringLiteral("don"), 3)->typeCharacter(u'\'');
        QCOMPARE(m_buffer->text(), QStringLiteral("don'"));
    }
    void typingAClosingCharacterStepsOverIt()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("f()"), 2);
        editor->typeCharacter(u')');
        QCOMPARE(editor->text(), QStringLiteral("f()"));
        QCOMPARE(editor->selection().second, 3);
        bufferWith(QStringLiteral("s = \"\""), 5)->typeCharacter(u'"');
        QCOMPARE(m_buffer->text(), QStringLiteral("s = \"\""));
        QCOMPARE(m_buffer->selection().second, 6);
    }
    void indentAndOutdentShiftTheSelectedLines()
    {
        TPEditBuffer *editor = bufferWith(QStringLiteral("a\nb\nc"), 0);
        editor->select(0, 3);
        editor->indent();
        QCOMPARE(editor->text(), QStringLiteral("    a\n    b\nc"));
        editor->select(0, 8);
        editor->outdent();
        QCOMPARE(editor->text(), QStringLiteral("a\nb\nc"));
        editor->undo();
        QCOMPARE(editor->text(), QStringLiteral("    a\n    b\nc"));
    }
    void goToLinePutsTheCursorAtTheLineStart()
    {
        TPEditBuffer *editor = bufferWith(u("one\r\ntwo\r\nthree"), 0);
        editor->goToLine(3);
        QCOMPARE(editor->selection().second, 10);
        editor->goToLine(99);
        QCOMPARE(editor->selection().second, 10);
        editor->goToLine(0);
        QCOMPARE(editor->selection().second, 0);
    }

    void tabInsertsTheFileIndentUnitOverTheSelection()
    {
        TPEditBuffer *buffer = bufferWith(QStringLiteral("if a then\n  b()\nend\n"), 10);
        buffer->insertIndent();
        QCOMPARE(buffer->text(), QStringLiteral("if a then\n    b()\nend\n"));
        buffer->select(10, 14);
        buffer->insertIndent();
        QCOMPARE(buffer->text(), QStringLiteral("if a then\n  b()\nend\n"));
    }

    void aNewTextStartsAFreshHistoryAndTakesItsIndentStep()
    {
        TPEditBuffer *buffer = bufferWith(QStringLiteral("a"), 1);
        buffer->typeCharacter(u'b');
        QVERIFY(buffer->canUndo());
        QSignalSpy indentChanged(buffer, &TPEditBuffer::indentChanged);
        buffer->setText(QStringLiteral("if a then\n\tb()\nend"));
        QVERIFY(!buffer->canUndo());
        QCOMPARE(buffer->indentUnit(), QStringLiteral("\t"));
        QCOMPARE(buffer->indentColumns(), 4);
        QCOMPARE(indentChanged.size(), 1);
    }

    void theRevisionCountsEveryChangeOfTheText()
    {
        TPEditBuffer *buffer = bufferWith(QStringLiteral("x"), 1);
        const quint64 start = buffer->revision();
        buffer->typeCharacter(u'y');
        buffer->newLine();
        QCOMPARE(buffer->revision(), start + 2);
        buffer->undo();
        QCOMPARE(buffer->revision(), start + 3);
        buffer->select(0, 0);
        QCOMPARE(buffer->revision(), start + 3);
    }

    // What the view reports as typed is recorded, and a run of typing is one undo step.
    void aRunOfShownTypingIsOneUndoStep()
    {
        TPEditBuffer *buffer = bufferWith(u("end\r\n"));
        buffer->recordShownChange(0, 0, 0, QStringLiteral("a"));
        buffer->recordShownChange(0, 1, 0, QStringLiteral("b"));
        QCOMPARE(buffer->text(), u("abend\r\n"));
        buffer->undo();
        QCOMPARE(buffer->text(), u("end\r\n"));
        QVERIFY(!buffer->canUndo());
    }

    void typingEndAtTheStartOfAnIndentedLineMovesItBackALevel()
    {
        TPEditBuffer *buffer = bufferWith(QStringLiteral("if a then\n    b()\n    en"), 24);
        buffer->typeCharacter(u'd');
        QCOMPARE(buffer->text(), QStringLiteral("if a then\n    b()\nend"));
        QCOMPARE(buffer->selection().second, 21);
    }

    void aSelectionOutsideTheTextIsClampedToIt()
    {
        TPEditBuffer *buffer = bufferWith(QStringLiteral("abc"));
        buffer->select(-4, 99);
        QCOMPARE(buffer->selection().first, 0);
        QCOMPARE(buffer->selection().second, 3);
    }
};

QTEST_MAIN(TestTPEditBuffer)
#include "tst_tpeditbuffer.moc"
