#include "editing/tpcodeeditrules.h"

#include <QTest>

namespace {

TPScriptText textOf(const QString &content)
{
    TPScriptText text;
    text.setText(content);
    return text;
}

// The text after the action, with "|" where the cursor ends.
QString after(const QString &content, const TPCodeEditRules::Action &action)
{
    TPScriptText text = textOf(content);
    text.apply(action.edit);
    QString result = text.text();
    result.insert(action.cursor, u'|');
    return result;
}

} // namespace

// The editor's key rules on exact text, without any view.
class TestTPCodeEditRules : public QObject
{
    Q_OBJECT

private slots:
    void theIndentUnitFollowsTheFile_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("unit");
        QTest::newRow("nothing indented") << "a\nb\n"
                                          << "    ";
        QTest::newRow("two spaces") << "if x then\n  y()\n    z()\nend\n"
                                    << "  ";
        QTest::newRow("tabs") << "if x then\n\ty()\n\tz()\nend\n"
                              << "\t";
        QTest::newRow("three spaces") << "do\n   a()\nend\n"
                                      << "   ";
    }
    void theIndentUnitFollowsTheFile()
    {
        QFETCH(QString, content);
        QFETCH(QString, unit);
        QCOMPARE(TPCodeEditRules::indentUnit(textOf(content)), unit);
    }

    void blockOpenersAreRecognisedOutsideComments_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("opens");
        QTest::newRow("then") << "if x then" << true;
        QTest::newRow("do") << "for i = 1, 3 do" << true;
        QTest::newRow("function") << "local function f(a, b)" << true;
        QTest::newRow("brace") << "t = {" << true;
        QTest::newRow("plain") << "x = 1" << false;
        QTest::newRow("in a comment") << "x = 1 -- then" << false;
    }
    void blockOpenersAreRecognisedOutsideComments()
    {
        QFETCH(QString, line);
        QFETCH(bool, opens);
        QCOMPARE(TPCodeEditRules::opensBlock(line), opens);
    }

    void enterKeepsTheLineEndingAndIndentsAfterAnOpener()
    {
        const QString content = QStringLiteral("if x then\r\nend\r\n");
        const auto action = TPCodeEditRules::newLine(textOf(content), 9, 9, QStringLiteral("  "));
        QCOMPARE(after(content, action), QStringLiteral("if x then\r\n  |\r\nend\r\n"));
    }

    void anOpeningBracketTypesItsPairAndAClosingOneStepsOver()
    {
        const QString content = QStringLiteral("f");
        const auto open = TPCodeEditRules::typed(textOf(content), 1, 1, u'(');
        QVERIFY(open);
        QCOMPARE(after(content, *open), QStringLiteral("f(|)"));
        const auto close = TPCodeEditRules::typed(textOf(QStringLiteral("f()")), 2, 2, u')');
        QVERIFY(close);
        QCOMPARE(after(QStringLiteral("f()"), *close), QStringLiteral("f()|"));
        QVERIFY(!TPCodeEditRules::typed(textOf(content), 1, 1, u'x'));
    }

    void aClosingWordAtTheLineStartMovesBackOneLevel()
    {
        const QString content = QStringLiteral("if x then\n  y()\n  end");
        const auto action =
            TPCodeEditRules::outdentClosing(textOf(content), content.size(), QStringLiteral("  "));
        QVERIFY(action);
        QCOMPARE(after(content, *action), QStringLiteral("if x then\n  y()\nend|"));
        // A word that only starts like one stays.
        const QString other = QStringLiteral("if x then\n  y()\n  ending");
        QVERIFY(
            !TPCodeEditRules::outdentClosing(textOf(other), other.size(), QStringLiteral("  ")));
    }

    void backspaceBetweenAnEmptyPairRemovesBoth()
    {
        const auto action = TPCodeEditRules::backspace(textOf(QStringLiteral("f()")), 2, 2);
        QVERIFY(action);
        QCOMPARE(after(QStringLiteral("f()"), *action), QStringLiteral("f|"));
        QVERIFY(!TPCodeEditRules::backspace(textOf(QStringLiteral("f(x)")), 3, 3));
    }

    void indentAndOutdentShiftEveryTouchedLine()
    {
        TPScriptText text = textOf(QStringLiteral("a\nb\nc\n"));
        for (const TPTextEdit &edit :
             TPCodeEditRules::indentLines(text, 0, 3, QStringLiteral("  ")))
            text.apply(edit);
        QCOMPARE(text.text(), QStringLiteral("  a\n  b\nc\n"));
        for (const TPTextEdit &edit :
             TPCodeEditRules::outdentLines(text, 0, text.text().size(), QStringLiteral("  ")))
            text.apply(edit);
        QCOMPARE(text.text(), QStringLiteral("a\nb\nc\n"));
    }
};

QTEST_GUILESS_MAIN(TestTPCodeEditRules)
#include "tst_tpcodeeditrules.moc"
