#include "editing/tptextsearch.h"

#include <QTest>

// One query over exact text: what it matches and what it makes of each match.
class TestTPTextSearch : public QObject
{
    Q_OBJECT

    using Matches = QList<TPTextSearch::Match>;

private slots:
    void plainTextIgnoresCaseUnlessAsked()
    {
        const QString text = QStringLiteral("Tap(1) tap(2) TAP(3)");
        QCOMPARE(TPTextSearch(QStringLiteral("tap("), false, false).matches(text),
                 Matches({{0, 4}, {7, 4}, {14, 4}}));
        QCOMPARE(TPTextSearch(QStringLiteral("tap("), false, true).matches(text),
                 Matches({{7, 4}}));
    }

    void plainTextTakesPatternCharactersLiterally()
    {
        QCOMPARE(
            TPTextSearch(QStringLiteral("a.b"), false, false).matches(QStringLiteral("axb a.b")),
            Matches({{4, 3}}));
    }

    void aRegularExpressionMatchesByLineAndSkipsEmptyMatches()
    {
        const QString text = QStringLiteral("sleep(1)\nsleep(20)\n");
        QCOMPARE(TPTextSearch(QStringLiteral("^sleep\\(\\d+\\)$"), true, false).matches(text),
                 Matches({{0, 8}, {9, 9}}));
        QCOMPARE(TPTextSearch(QStringLiteral("x*"), true, false).matches(text), Matches());
    }

    void aBrokenRegularExpressionIsEmptyAndInvalid()
    {
        const TPTextSearch broken(QStringLiteral("tap("), true, false);
        QVERIFY(!broken.isValid());
        QVERIFY(broken.isEmpty());
        QCOMPARE(broken.matches(QStringLiteral("tap(1)")), Matches());
        QVERIFY(TPTextSearch().isEmpty());
    }

    void groupsNameWhatTheyCaughtInTheReplacement()
    {
        const QString text = QStringLiteral("tap(1, 2)");
        const TPTextSearch search(QStringLiteral("tap\\((\\d), (\\d)\\)"), true, false);
        const Matches found = search.matches(text);
        QCOMPARE(found.size(), 1);
        QCOMPARE(search.replacementFor(text, found.first(), QStringLiteral("tap(\\2, \\1) \\0")),
                 QStringLiteral("tap(2, 1) tap(1, 2)"));
        // Plain text puts the replacement as it is.
        const TPTextSearch plain(QStringLiteral("tap"), false, false);
        QCOMPARE(plain.replacementFor(text, {0, 3}, QStringLiteral("\\1")), QStringLiteral("\\1"));
    }

    void replacingChangesOnlyTheMatches()
    {
        const QString text = QStringLiteral("\uFEFFsleep(1)\r\nsleep(2)\r\nx = 'café'\r\n");
        const TPTextSearch search(QStringLiteral("sleep"), false, true);
        QCOMPARE(search.replaced(text, search.matches(text), QStringLiteral("wait")),
                 QStringLiteral("\uFEFFwait(1)\r\nwait(2)\r\nx = 'café'\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestTPTextSearch)
#include "tst_tptextsearch.moc"
