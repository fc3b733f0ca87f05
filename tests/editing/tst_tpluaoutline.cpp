#include "editing/tpluaoutline.h"

#include <QTest>

namespace {

QList<TPLuaOutline::Entry> outlineOf(const QString &source)
{
    TPScriptText text;
    text.setText(source);
    return TPLuaOutline::functions(text);
}

} // namespace

// The functions of a script, as the outline lists them.
class TestTPLuaOutline : public QObject
{
    Q_OBJECT

private slots:
    void everyFunctionFormIsListedInOrderWithItsLine()
    {
        const QString sample = QStringLiteral("local function helper(x)\n"
                                              "function M.util.run(a, b)\n"
                                              "function Obj:method() end\n"
                                              "local cb = function() end\n"
                                              "M.handler = function(e)\n"
                                              "t = { click = function() end }\n"
                                              "local x = 1; y = function() end\n");
        const QList<TPLuaOutline::Entry> expected = {
            {QStringLiteral("helper"), 1},     {QStringLiteral("M.util.run"), 2},
            {QStringLiteral("Obj:method"), 3}, {QStringLiteral("cb"), 4},
            {QStringLiteral("M.handler"), 5},  {QStringLiteral("click"), 6},
            {QStringLiteral("y"), 7}};
        const QList<TPLuaOutline::Entry> found = outlineOf(sample);
        QCOMPARE(found.size(), expected.size());
        for (qsizetype i = 0; i < expected.size(); ++i) {
            QCOMPARE(found.at(i).name, expected.at(i).name);
            QCOMPARE(found.at(i).line, expected.at(i).line);
        }
    }

    void functionsInCommentsAndStringsAreNotListed()
    {
        const QString sample = QStringLiteral("-- function commented()\n"
                                              "s = \"function inString()\"\n"
                                              "--[[\n"
                                              "function insideLongComment()\n"
                                              "]]\n"
                                              "local long = [==[\n"
                                              "function insideLongString()\n"
                                              "]==]\n"
                                              "function real()\n");
        const QList<TPLuaOutline::Entry> found = outlineOf(sample);
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.first().name, QStringLiteral("real"));
        QCOMPARE(found.first().line, 9);
    }

    void anonymousFunctionsAreNotListed()
    {
        QVERIFY(outlineOf(QStringLiteral("print(function() end)\n"
                                         "table.sort(t, function(a, b) return a < b end)\n"
                                         "if x == function() end then end\n"))
                    .isEmpty());
    }

    void linesAreCountedInTheFileOwnLineEndings()
    {
        const QList<TPLuaOutline::Entry> found =
            outlineOf(QStringLiteral("a = 1\r\n\rfunction f()\r\nend\nfunction g() end"));
        QCOMPARE(found.size(), 2);
        QCOMPARE(found.at(0).line, 3);
        QCOMPARE(found.at(1).line, 5);
    }
};

QTEST_MAIN(TestTPLuaOutline)
#include "tst_tpluaoutline.moc"
