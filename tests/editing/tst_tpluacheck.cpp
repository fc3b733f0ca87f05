#include "editing/tpluacheck.h"

#include <QTest>

namespace {

// Each warning as "code line:column-endColumn name", with its suggestion after "~".
QStringList shown(const TPLintResult &result)
{
    QStringList rows;
    for (const TPLintWarning &warning : result.warnings)
        rows.append(QStringLiteral("%1 %2:%3-%4 %5%6")
                        .arg(warning.code)
                        .arg(warning.line)
                        .arg(warning.column)
                        .arg(warning.endColumn)
                        .arg(warning.name,
                             warning.suggestion.isEmpty() ? QString() : u'~' + warning.suggestion));
    return rows;
}

} // namespace

// luacheck inside the app, on Lua 5.4, with its modules from the resources.
class TestTPLuaCheck : public QObject
{
    Q_OBJECT

    TPLuaCheck m_check;

private slots:
    void anUnusedLocalAnUnknownGlobalAndAShadowedLocalAreFoundWhereTheyAre()
    {
        const TPLintResult result = m_check.check(QStringLiteral("local unused = 1\n"
                                                                 "tpa(1, 2)\n"
                                                                 "local function f(a)\n"
                                                                 "  local a = a + 1\n"
                                                                 "  return a\n"
                                                                 "end\n"
                                                                 "return f\n"),
                                                  {QStringLiteral("tap")});
        QCOMPARE(result.status, TPLintResult::Status::Linted);
        QCOMPARE(shown(result),
                 QStringList({"211 1:7-12 unused", "113 2:1-3 tpa~tap", "412 4:9-9 a"}));
        QCOMPARE(result.warnings.at(0).message, QStringLiteral("unused variable 'unused'"));
    }

    void aGlobalKnownFromElsewhereOrTheStandardLibraryIsNotFlagged()
    {
        const TPLintResult result = m_check.check(
            QStringLiteral("helper(string.format('%d', 1), math.max(1, 2), utf8.char(65))\n"),
            {QStringLiteral("helper")});
        QCOMPARE(result.status, TPLintResult::Status::Linted);
        QCOMPARE(shown(result), QStringList());
    }

    // A script may define globals for the others; using one it defines is no warning.
    void definingAndUsingAGlobalIsNotWarnedAbout()
    {
        const TPLintResult result =
            m_check.check(QStringLiteral("function helper() end\ncount = 1\nhelper()\n"), {});
        QCOMPARE(result.status, TPLintResult::Status::Linted);
        QCOMPARE(shown(result), QStringList());
    }

    void anUnknownGlobalFarFromEveryKnownNameHasNoSuggestion()
    {
        const TPLintResult result =
            m_check.check(QStringLiteral("zzqqxx()\n"), {QStringLiteral("tap")});
        QCOMPARE(shown(result), QStringList({"113 1:1-6 zzqqxx"}));
    }

    void formattingIsNotWarnedAbout()
    {
        const TPLintResult result =
            m_check.check(QStringLiteral("print(1)   \n-- ") + QString(200, u'x') +
                              QStringLiteral("\n\tprint(2) \n"),
                          {});
        QCOMPARE(shown(result), QStringList());
    }

    void aScriptOverTheLineBoundIsLeftUnlinted()
    {
        QString source;
        for (int line = 0; line < TPLuaCheck::MaxLines; ++line)
            source += QStringLiteral("x = 1\n");
        const TPLintResult result = m_check.check(source, {});
        QCOMPARE(result.status, TPLintResult::Status::TooLong);
        QVERIFY(result.warnings.isEmpty());
        source.chop(6);
        QCOMPARE(m_check.check(source, {}).status, TPLintResult::Status::Linted);
    }

    void aRunPastItsTimeIsStoppedAndTheNextOneRunsAgain()
    {
        QString source;
        for (int line = 0; line < 3000; ++line)
            source += QStringLiteral("local v%1 = tap(%1)\n").arg(line);
        QCOMPARE(m_check.check(source, {QStringLiteral("tap")}, 1).status,
                 TPLintResult::Status::TooSlow);
        const TPLintResult again = m_check.check(QStringLiteral("local x = 1\n"), {});
        QCOMPARE(again.status, TPLintResult::Status::Linted);
        QCOMPARE(shown(again), QStringList({"211 1:7-7 x"}));
    }

    void theScriptIsNeverRun()
    {
        const TPLintResult result =
            m_check.check(QStringLiteral("error('ran')\nos.exit(3)\nwhile true do end\n"), {});
        QCOMPARE(result.status, TPLintResult::Status::Linted);
    }

    void theGlobalsAScriptDefinesAndUsesAreFoundByScope()
    {
        const TPLuaGlobals found = m_check.globals(
            QStringLiteral("function helper() end\n"
                           "config = {}\n"
                           "local function inner(tap) tap() end\n"
                           "tap(1, 2)\ntap(3, 4)\nsleep(10)\nprint(string.rep('x', 2))\n"
                           "settings.speed = 2\nlocal t = {}\nt.field = helper\n"));
        QCOMPARE(found.defined, QStringList({"config", "helper"}));
        QCOMPARE(found.used, (QList<std::pair<QString, int>>{
                                 {"helper", 1}, {"settings", 1}, {"sleep", 1}, {"tap", 2}}));
        QCOMPARE(m_check.globals(QStringLiteral("local x = (")).used.size(), 0);
    }

    void theStandardGlobalsAreLuas()
    {
        const QStringList standard = m_check.standardGlobals();
        for (const char *name : {"print", "string", "table", "utf8", "coroutine", "require"})
            QVERIFY2(standard.contains(QLatin1String(name)), name);
        QVERIFY(!standard.contains(QStringLiteral("tap")));
    }

    void theClosestNameIsWithinTwoEditsAndShorterThanTheName()
    {
        const QStringList known = {"tap", "sleep", "print", "touchDown"};
        QCOMPARE(TPLuaCheck::closestName(QStringLiteral("tpa"), known), QStringLiteral("tap"));
        QCOMPARE(TPLuaCheck::closestName(QStringLiteral("slep"), known), QStringLiteral("sleep"));
        QCOMPARE(TPLuaCheck::closestName(QStringLiteral("touchdwn"), known),
                 QStringLiteral("touchDown"));
        QCOMPARE(TPLuaCheck::closestName(QStringLiteral("x"), known), QString());
        QCOMPARE(TPLuaCheck::closestName(QStringLiteral("count"), known), QString());
    }
};

QTEST_GUILESS_MAIN(TestTPLuaCheck)
#include "tst_tpluacheck.moc"
