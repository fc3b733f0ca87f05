#include "tpcodeeditor.h"
#include "tptheme.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

// The code editor on a bare document: what each editing tool does to the exact text.
class TestTPCodeEditor : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTextDocument> m_document;
    std::unique_ptr<TPCodeEditor> m_editor;

    TPCodeEditor *editorWith(const QString &text, qsizetype cursor = 0)
    {
        m_editor = std::make_unique<TPCodeEditor>(QStringLiteral("main.lua"));
        m_document = std::make_unique<QTextDocument>();
        m_document->documentLayout();
        m_editor->attachDocument(m_document.get());
        m_editor->setText(text);
        m_editor->select(cursor, cursor);
        return m_editor.get();
    }

private slots:
    void cleanup()
    {
        m_editor.reset();
        m_document.reset();
    }

    // The keyword colour is the theme's, and follows a switch to the dark appearance.
    void tokenColoursFollowTheAppearance()
    {
        editorWith(QStringLiteral("local x = 1"));
        const auto keywordColour = [this] {
            const QTextBlock block = m_document->firstBlock();
            for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
                if (range.start == 0)
                    return range.format.foreground().color();
            }
            return QColor();
        };
        TPTheme::shared()->setAppearance(TPTheme::Appearance::Light);
        QTRY_COMPARE(keywordColour(), TPTheme::lightPalette().syntax.keyword);
        TPTheme::shared()->setAppearance(TPTheme::Appearance::Dark);
        QTRY_COMPARE(keywordColour(), TPTheme::darkPalette().syntax.keyword);
        TPTheme::shared()->setAppearance(TPTheme::Appearance::FollowPlatform);
    }

    void undoAndRedoGiveBackExactBytes()
    {
        const QString original = u("a\r\nb\xc2\xa0\rc");
        TPCodeEditor *editor = editorWith(original, 1);
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

    void typingIntoTheDocumentIsOneUndoStepPerRun()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("end"));
        QTextCursor cursor(editor->document());
        for (const QChar c : QStringLiteral("abc")) {
            cursor.insertText(QString(c));
        }
        QCOMPARE(editor->text(), QStringLiteral("abcend"));
        editor->undo();
        QCOMPARE(editor->text(), QStringLiteral("end"));
        QVERIFY(!editor->canUndo());
    }

    void symbolKeysInsertAtTheCursor()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("ab"), 1);
        editor->pressSymbolKey(QStringLiteral("="));
        QCOMPARE(editor->text(), QStringLiteral("a=b"));
        QCOMPARE(editor->selection().second, 2);
        editor->pressSymbolKey(QStringLiteral("#"));
        QCOMPARE(editor->text(), QStringLiteral("a=#b"));
    }

    void symbolRowHoldsEveryHiddenKey()
    {
        TPCodeEditor editor(QStringLiteral("a.lua"));
        const QStringList keys = editor.symbolKeys();
        for (const char *key :
             {"(", ")", "[", "]", "{", "}", "\"", "'", "=", ".",   ",",      ":",      ";",
              "#", "-", "+", "*", "/", "<", ">",  "~", "_", "Tab", "Indent", "Outdent"})
            QVERIFY2(keys.contains(QLatin1String(key)), key);
    }

    void tabKeyInsertsTheFileIndentUnit()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("if a then\n  b()\nend\n"), 10);
        editor->pressSymbolKey(QStringLiteral("Tab"));
        QCOMPARE(editor->text(), QStringLiteral("if a then\n    b()\nend\n"));
    }

    void enterKeepsTheIndentation()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("    tap(1, 2)"), 13);
        editor->newLine();
        QCOMPARE(editor->text(), QStringLiteral("    tap(1, 2)\n    "));
        QCOMPARE(editor->selection().second, 18);
    }

    void enterAfterABlockOpenerIndentsOneLevelMore()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("for i = 1, 3 do"), 15);
        editor->newLine();
        QCOMPARE(editor->text(), QStringLiteral("for i = 1, 3 do\n    "));
        editorWith(QStringLiteral("if x then -- note"), 17)->newLine();
        QCOMPARE(m_editor->text(), QStringLiteral("if x then -- note\n    "));
        editorWith(QStringLiteral("local f = function(a)"), 21)->newLine();
        QCOMPARE(m_editor->text(), QStringLiteral("local f = function(a)\n    "));
    }

    void enterUsesTheFileLineEnding()
    {
        TPCodeEditor *editor = editorWith(u("a\r\nb\r\n"), 1);
        editor->newLine();
        QCOMPARE(editor->text(), u("a\r\n\r\nb\r\n"));
    }

    void enterBetweenBracketsOpensAnIndentedLine()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("t = {}"), 5);
        editor->newLine();
        QCOMPARE(editor->text(), QStringLiteral("t = {\n    \n}"));
        QCOMPARE(editor->selection().second, 10);
    }

    void openingBracketsAndQuotesTypeTheirPair()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("print"), 5);
        editor->typeCharacter(u'(');
        QCOMPARE(editor->text(), QStringLiteral("print()"));
        QCOMPARE(editor->selection().second, 6);
        editor->typeCharacter(u'"');
        QCOMPARE(editor->text(), QStringLiteral("print(\"\")"));
        QCOMPARE(editor->selection().second, 7);
    }

    void noPairIsTypedBeforeAWord()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("x"), 0);
        editor->typeCharacter(u'(');
        QCOMPARE(editor->text(), QStringLiteral("(x"));
        editorWith(QStringLiteral("don"), 3)->typeCharacter(u'\'');
        QCOMPARE(m_editor->text(), QStringLiteral("don'"));
    }

    void typingAClosingCharacterStepsOverIt()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("f()"), 2);
        editor->typeCharacter(u')');
        QCOMPARE(editor->text(), QStringLiteral("f()"));
        QCOMPARE(editor->selection().second, 3);
        editorWith(QStringLiteral("s = \"\""), 5)->typeCharacter(u'"');
        QCOMPARE(m_editor->text(), QStringLiteral("s = \"\""));
        QCOMPARE(m_editor->selection().second, 6);
    }

    void indentAndOutdentShiftTheSelectedLines()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("a\nb\nc"), 0);
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
        TPCodeEditor *editor = editorWith(u("one\r\ntwo\r\nthree"), 0);
        editor->goToLine(3);
        QCOMPARE(editor->selection().second, 10);
        editor->goToLine(99);
        QCOMPARE(editor->selection().second, 10);
        editor->goToLine(0);
        QCOMPARE(editor->selection().second, 0);
    }

    void syntaxErrorIsMarkedWithItsLineAndMessage()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("for i = 1, 3 do\n  print(i)\n"));
        QSignalSpy checked(editor, &TPCodeEditor::syntaxChecked);
        QVERIFY(checked.wait(5000));
        QCOMPARE(editor->syntaxErrorLine(), 3);
        QCOMPARE(editor->syntaxMessage(), QStringLiteral("main.lua:3: 'end' expected (to close "
                                                         "'for' at line 1) near <eof>"));
    }

    void validCodeHasNoMarkAndAFixClearsIt()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("print(1\n"));
        QTRY_COMPARE_WITH_TIMEOUT(editor->syntaxErrorLine(), 2, 5000);
        editor->select(7, 7);
        editor->typeCharacter(u')');
        QTRY_COMPARE_WITH_TIMEOUT(editor->syntaxErrorLine(), 0, 5000);
        QCOMPARE(editor->syntaxMessage(), QString());
    }

    // Each key restarts the 0.6 s wait: the check comes once, no sooner than 0.6 s after the
    // last key, and nothing is left waiting after it.
    void aBurstOfTypingIsCheckedOnce600MsAfterItsLastKey()
    {
        TPCodeEditor *editor = editorWith(QStringLiteral("x = 1"));
        QSignalSpy checked(editor, &TPCodeEditor::syntaxChecked);
        QVERIFY(checked.wait(5000));
        checked.clear();
        QElapsedTimer sinceLastKey;
        for (int i = 0; i < 5; ++i) {
            editor->typeCharacter(u' ');
            sinceLastKey.start();
            QVERIFY(editor->syntaxCheckPending());
        }
        QVERIFY(checked.wait(5000));
        // A coarse timer may fire up to 5% early.
        QVERIFY2(sinceLastKey.elapsed() >= 570,
                 qPrintable(QString::number(sinceLastKey.elapsed())));
        QCOMPARE(checked.size(), 1);
        QVERIFY(!editor->syntaxCheckPending());
    }
};

QTEST_MAIN(TestTPCodeEditor)
#include "tst_tpcodeeditor.moc"
