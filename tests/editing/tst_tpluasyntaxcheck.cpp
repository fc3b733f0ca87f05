#include "editing/tpluasyntaxcheck.h"

#include <QTest>

// The Lua 5.4 compiler's verdict, without any editor.
class TestTPLuaSyntaxCheck : public QObject
{
    Q_OBJECT

private slots:
    void validCodeHasNoError()
    {
        const TPLuaSyntaxResult result =
            TPCheckLuaSyntax(QStringLiteral("ok.lua"), QStringLiteral("local x = 1\nprint(x)\n"));
        QVERIFY(result.ok());
    }

    void anErrorGivesItsLineAndTheCompilersMessage()
    {
        const TPLuaSyntaxResult result = TPCheckLuaSyntax(
            QStringLiteral("main.lua"), QStringLiteral("x = 1\nfor i = 1, 3 do\n"));
        QCOMPARE(result.line, 3);
        QVERIFY2(result.message.startsWith(QLatin1String("main.lua:3:")),
                 qPrintable(result.message));
        QVERIFY(result.message.contains(QLatin1String("'end' expected")));
    }

    void theScriptIsCompiledNeverRun()
    {
        // Running it would never end; compiling it is immediate.
        const TPLuaSyntaxResult result =
            TPCheckLuaSyntax(QStringLiteral("loop.lua"), QStringLiteral("while true do end\n"));
        QVERIFY(result.ok());
    }

    void aBinaryChunkIsRefused()
    {
        const TPLuaSyntaxResult result =
            TPCheckLuaSyntax(QStringLiteral("bin.lua"), QStringLiteral("\x1bLua"));
        QVERIFY(!result.ok());
    }
};

QTEST_GUILESS_MAIN(TestTPLuaSyntaxCheck)
#include "tst_tpluasyntaxcheck.moc"
