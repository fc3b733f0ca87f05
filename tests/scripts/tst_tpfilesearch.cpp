#include "scripts/tpfilesearch.h"

#include <QTest>

// The search in all files over texts already read: matches with their lines, and what a
// replace makes of each file.
class TestTPFileSearch : public QObject
{
    Q_OBJECT

private slots:
    void eachMatchHasItsLineNumberAndLineWithoutTheBreak()
    {
        const TPFileSearch::Texts texts = {
            {QStringLiteral("a.lua"), QStringLiteral("x = 1\r\n  tap(1)\r\n\r\ntap(2) tap(3)")},
            {QStringLiteral("b.lua"), QStringLiteral("nothing here\n")}};
        const QList<TPFileMatches> found =
            TPFileSearch::find(texts, TPTextSearch(QStringLiteral("tap"), false, false));
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.first().path, QStringLiteral("a.lua"));
        QCOMPARE(found.first().matchCount, 3);
        const QList<TPFileMatch> &matches = found.first().matches;
        QCOMPARE(matches.at(0).line, 2);
        QCOMPARE(matches.at(0).lineText, QStringLiteral("  tap(1)"));
        QCOMPARE(matches.at(0).column, 2);
        QCOMPARE(matches.at(0).offset, 9);
        QCOMPARE(matches.at(1).line, 4);
        QCOMPARE(matches.at(1).lineText, QStringLiteral("tap(2) tap(3)"));
        QCOMPARE(matches.at(2).line, 4);
        QCOMPARE(matches.at(2).column, 7);
        QCOMPARE(matches.at(2).columnLength, 3);
    }

    void aMatchOverSeveralLinesIsShownOnItsFirst()
    {
        const TPFileSearch::Texts texts = {
            {QStringLiteral("a.lua"), QStringLiteral("if x then\nend\n")}};
        const QList<TPFileMatches> found =
            TPFileSearch::find(texts, TPTextSearch(QStringLiteral("then\\nend"), true, false));
        QCOMPARE(found.size(), 1);
        const TPFileMatch match = found.first().matches.first();
        QCOMPARE(match.line, 1);
        QCOMPARE(match.lineText, QStringLiteral("if x then"));
        QCOMPARE(match.columnLength, 4);
        QCOMPARE(match.length, 8);
    }

    void aFileWithVeryManyMatchesKeepsTheFirstAndCountsThemAll()
    {
        const TPFileSearch::Texts texts = {
            {QStringLiteral("a.lua"),
             QStringLiteral("tap()\n").repeated(TPFileSearch::MatchesKept + 5)}};
        const QList<TPFileMatches> found =
            TPFileSearch::find(texts, TPTextSearch(QStringLiteral("tap"), false, false));
        QCOMPARE(found.first().matches.size(), TPFileSearch::MatchesKept);
        QCOMPARE(found.first().matchCount, TPFileSearch::MatchesKept + 5);
        QCOMPARE(found.first().matches.last().line, TPFileSearch::MatchesKept);
    }

    void aReplaceShowsEachChangedLineBeforeAndAfter()
    {
        const TPFileSearch::Texts texts = {
            {QStringLiteral("a.lua"),
             QStringLiteral("sleep(1) sleep(2)\r\nx = 1\r\n  sleep(3)\r\n")},
            {QStringLiteral("b.lua"), QStringLiteral("nothing\n")}};
        const QList<TPFileReplace> changed = TPFileSearch::replace(
            texts, TPTextSearch(QStringLiteral("sleep\\((\\d)\\)"), true, false),
            QStringLiteral("wait(\\1)"));
        QCOMPARE(changed.size(), 1);
        const TPFileReplace &file = changed.first();
        QCOMPARE(file.path, QStringLiteral("a.lua"));
        QCOMPARE(file.replaced, 3);
        QCOMPARE(file.after, QStringLiteral("wait(1) wait(2)\r\nx = 1\r\n  wait(3)\r\n"));
        QCOMPARE(file.changes.size(), 2);
        QCOMPARE(file.changes.at(0).line, 1);
        QCOMPARE(file.changes.at(0).before, QStringLiteral("sleep(1) sleep(2)"));
        QCOMPARE(file.changes.at(0).after, QStringLiteral("wait(1) wait(2)"));
        QCOMPARE(file.changes.at(1).line, 3);
        QCOMPARE(file.changes.at(1).before, QStringLiteral("  sleep(3)"));
        QCOMPARE(file.changes.at(1).after, QStringLiteral("  wait(3)"));
    }

    void aReplaceThatJoinsLinesShowsAllItTouches()
    {
        const TPFileSearch::Texts texts = {{QStringLiteral("a.lua"), QStringLiteral("a\nb\nc\n")}};
        const QList<TPFileReplace> changed = TPFileSearch::replace(
            texts, TPTextSearch(QStringLiteral("a\\nb"), true, false), QStringLiteral("ab"));
        QCOMPARE(changed.first().changes.size(), 1);
        QCOMPARE(changed.first().changes.first().before, QStringLiteral("a\nb"));
        QCOMPARE(changed.first().changes.first().after, QStringLiteral("ab"));
        QCOMPARE(changed.first().after, QStringLiteral("ab\nc\n"));
    }

    void anEmptyQueryFindsNothing()
    {
        const TPFileSearch::Texts texts = {{QStringLiteral("a.lua"), QStringLiteral("tap()\n")}};
        QVERIFY(TPFileSearch::find(texts, TPTextSearch()).isEmpty());
        QVERIFY(TPFileSearch::replace(texts, TPTextSearch(), QStringLiteral("x")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTPFileSearch)
#include "tst_tpfilesearch.moc"
