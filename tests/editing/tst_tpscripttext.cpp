#include "editing/tpscripttext.h"

#include "tpdocumenttext.h"

#include <QRandomGenerator>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace {

QString u(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class TestTPScriptText : public QObject
{
    Q_OBJECT

private slots:
    void linesEndWhereTheDocumentEndsItsBlocks_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("crlf") << u("a\r\nb\r\n");
        QTest::newRow("cr") << u("a\rb\r");
        QTest::newRow("mixed") << u("a\r\nb\nc\rd");
        QTest::newRow("cr then crlf") << u("i\r\r\nj");
        QTest::newRow("separators") << u("a\u2029b\u2028c\xef\xb7\x90"
                                         "d\xef\xb7\x91"
                                         "e");
        QTest::newRow("nbsp bom tab") << u("\xef\xbb\xbf"
                                           "a\xc2\xa0"
                                           "b\t");
        QTest::newRow("empty") << QString();
        QTest::newRow("only breaks") << u("\n\r\n\r\r");
    }

    void linesEndWhereTheDocumentEndsItsBlocks()
    {
        QFETCH(QString, text);
        TPScriptText script;
        script.setText(text);
        QTextDocument document;
        document.setPlainText(text);
        QCOMPARE(script.lineCount(), document.blockCount());
        QCOMPARE(script.documentText(), TPRawDocumentText(document));
        QCOMPARE(script.text(), text);
    }

    void dominantEndingIsTheMostCommonOne()
    {
        TPScriptText script;
        script.setText(u("a\r\nb\r\nc\nd"));
        QCOMPARE(script.dominantLineEnding(), u("\r\n"));
        script.setText(u("a\rb\rc"));
        QCOMPARE(script.dominantLineEnding(), u("\r"));
        script.setText(u("one line"));
        QCOMPARE(script.dominantLineEnding(), u("\n"));
        script.setText(u("a\r\nb\nc"));
        QCOMPARE(script.dominantLineEnding(), u("\n")); // LF wins a tie
    }

    void aChangeOfFormattingAloneChangesNothing()
    {
        TPScriptText script;
        script.setText(u("a\r\nb\xc2\xa0"
                         "c\u2028d\re"));
        const QString before = script.text();
        // The document reports a formatting change as its whole range removed and added.
        const TPTextEdit edit = script.applyDocumentChange(0, 0, 9, script.documentText());
        QVERIFY(edit.isNull());
        QCOMPARE(script.text(), before);
    }

    void aTypedCharacterChangesOnlyItself()
    {
        TPScriptText script;
        script.setText(u("a\r\nb\r\n"));
        const TPTextEdit edit = script.applyDocumentChange(2, 0, 0, u("x"));
        QCOMPARE(script.text(), u("a\r\nb\r\nx"));
        QCOMPARE(edit.offset, 6);
        QCOMPARE(edit.inserted, u("x"));
    }

    void enterTakesTheFileMostCommonEnding()
    {
        TPScriptText script;
        script.setText(u("a\r\nb\r\nc\nd"));
        script.applyDocumentChange(0, 1, 0, QString(QChar::ParagraphSeparator));
        QCOMPARE(script.text(), u("a\r\n\r\nb\r\nc\nd"));
    }

    void replacingALineBreakWithALineBreakKeepsItsKind()
    {
        TPScriptText script;
        script.setText(u("a\rb\nc"));
        // Select "a⏎b" and paste "x⏎y": the one break removed is reused.
        script.applyDocumentChange(0, 0, 3, u("x\u2029y"));
        QCOMPARE(script.text(), u("x\ry\nc"));
    }

    void aNewLfAfterALoneCrStaysTwoLines()
    {
        TPScriptText script;
        // Enter at the start of "b" in a file whose lines end in LF would join the CR.
        script.setText(u("a\rb\nc\nd"));
        script.applyDocumentChange(1, 0, 0, QString(QChar::ParagraphSeparator));
        QCOMPARE(script.lineCount(), 5);
        QCOMPARE(script.text(), u("a\r\r\nb\nc\nd"));
    }

    void removingTextBetweenCrAndLfKeepsTheLinesApart()
    {
        TPScriptText script;
        script.setText(u("a\rX\nb"));
        script.applyDocumentChange(1, 0, 1, QString());
        QCOMPARE(script.lineCount(), 3);
        QCOMPARE(script.lineText(1), QString());
        QCOMPARE(script.lineText(2), u("b"));
    }

    void aReplacementNeverSplitsACrLfPair()
    {
        TPScriptText script;
        script.setText(u("a\r\nb"));
        const TPTextEdit edit = script.replace(2, 0, u("x"));
        QCOMPARE(edit.offset, 1);
        QCOMPARE(edit.removed, u("\r\n"));
        QCOMPARE(edit.inserted, u("\rx\n"));
        QCOMPARE(script.text(), u("a\rx\nb"));
        QCOMPARE(script.lineCount(), 3);
    }

    void undoingAChangeGivesBackTheSameBytes()
    {
        TPScriptText script;
        const QString original = u("\xef\xbb\xbf"
                                   "a\r\nb\u2028\xc2\xa0\rc");
        script.setText(original);
        const TPTextEdit edit = script.applyDocumentChange(0, 0, 6, u("zz"));
        script.apply(edit.inverted());
        QCOMPARE(script.text(), original);
    }
};

QTEST_MAIN(TestTPScriptText)
#include "tst_tpscripttext.moc"
