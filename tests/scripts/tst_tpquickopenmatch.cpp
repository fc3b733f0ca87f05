#include "scripts/tpquickopenmatch.h"

#include <QTest>

namespace {

// The paths that match `query`, best first.
QStringList ranked(const QString &query, QStringList paths)
{
    std::sort(paths.begin(), paths.end(), TPQuickOpenMatch::comesFirst);
    QList<TPQuickOpenMatch::Key> keys;
    for (const QString &path : paths)
        keys.append(TPQuickOpenMatch::keyOf(path));
    QStringList result;
    for (const TPQuickOpenMatch::Ranked &found :
         TPQuickOpenMatch::rank(TPQuickOpenMatch::keyOf(query).folded, keys, 100).best)
        result.append(paths.at(found.index));
    return result;
}

const QStringList kPaths = {
    QStringLiteral("games/farm/harvest.lua"),
    QStringLiteral("games/farm/loop_forever.lua"),
    QStringLiteral("lib/util.lua"),
    QStringLiteral("lib/utilities/extra.lua"),
    QStringLiteral("tools/broken.lua"),
    QStringLiteral("main.lua"),
    QStringLiteral("old/Hàm_Mới.lua"),
    QStringLiteral("a/very/long/path/to/util.lua"),
    QStringLiteral("houses.lua"),
    QStringLiteral("Harvest_Notes.txt"),
};

} // namespace

// Which files quick open puts first for what is typed.
class TestTPQuickOpenMatch : public QObject
{
    Q_OBJECT

private slots:
    void aWholeSegmentComesFirstThenShorterPaths()
    {
        QCOMPARE(ranked(QStringLiteral("util"), kPaths),
                 QStringList({QStringLiteral("lib/util.lua"),
                              QStringLiteral("a/very/long/path/to/util.lua"),
                              QStringLiteral("lib/utilities/extra.lua")}));
    }

    void aNameStartComesBeforeAMatchInsideANameOrAFolder()
    {
        QCOMPARE(ranked(QStringLiteral("har"), kPaths),
                 QStringList({QStringLiteral("Harvest_Notes.txt"),
                              QStringLiteral("games/farm/harvest.lua")}));
        QCOMPARE(ranked(QStringLiteral("h"), kPaths).first(), QStringLiteral("houses.lua"));
    }

    void lettersInOrderNeedNotBeTogether()
    {
        QCOMPARE(ranked(QStringLiteral("lpfr"), kPaths),
                 QStringList({QStringLiteral("games/farm/loop_forever.lua")}));
        QCOMPARE(ranked(QStringLiteral("gfh"), kPaths),
                 QStringList({QStringLiteral("games/farm/harvest.lua")}));
        QVERIFY(ranked(QStringLiteral("zq"), kPaths).isEmpty());
    }

    void caseAndAccentsAreIgnored()
    {
        QCOMPARE(ranked(QStringLiteral("HAM MOI").remove(u' '), kPaths),
                 QStringList({QStringLiteral("old/Hàm_Mới.lua")}));
        QCOMPARE(ranked(QStringLiteral("hàm"), kPaths),
                 QStringList({QStringLiteral("old/Hàm_Mới.lua")}));
        QCOMPARE(ranked(QStringLiteral("MAIN"), kPaths), QStringList({QStringLiteral("main.lua")}));
    }

    // A longer query is matched among the matches of the shorter one it extends, with the
    // same results as over the whole list.
    void aLongerQueryMatchesAmongTheShorterOnesMatches()
    {
        QStringList paths = kPaths;
        std::sort(paths.begin(), paths.end(), TPQuickOpenMatch::comesFirst);
        QList<TPQuickOpenMatch::Key> keys;
        for (const QString &path : paths)
            keys.append(TPQuickOpenMatch::keyOf(path));
        const TPQuickOpenMatch::Ranking first =
            TPQuickOpenMatch::rank(QStringLiteral("u"), keys, 2);
        QCOMPARE(first.best.size(), 2);
        QVERIFY(first.matched.size() > 2);
        const auto indexes = [](const TPQuickOpenMatch::Ranking &ranking) {
            QList<qsizetype> found;
            for (const TPQuickOpenMatch::Ranked &ranked : ranking.best)
                found.append(ranked.index);
            return found;
        };
        const TPQuickOpenMatch::Ranking narrowed =
            TPQuickOpenMatch::rank(QStringLiteral("uti"), keys, 10, &first.matched);
        const TPQuickOpenMatch::Ranking whole =
            TPQuickOpenMatch::rank(QStringLiteral("uti"), keys, 10);
        QCOMPARE(indexes(narrowed), indexes(whole));
        QCOMPARE(narrowed.matched, whole.matched);
    }

    void theMatchedLettersAreMarkedInTheName()
    {
        const QString path = QStringLiteral("games/farm/harvest.lua");
        const auto found =
            TPQuickOpenMatch::match(QStringLiteral("hvt"), TPQuickOpenMatch::keyOf(path));
        QVERIFY(found);
        QCOMPARE(found->tier, TPQuickOpenMatch::Tier::InName);
        QCOMPARE(found->positions, QList<qsizetype>({11, 14, 17}));
        QCOMPARE(TPQuickOpenMatch::marked(QStringLiteral("harvest.lua"), found->positions, 11),
                 QStringLiteral("<b>h</b>ar<b>v</b>es<b>t</b>.lua"));
    }

    void markingEscapesTheNameAndKeepsAccentedLettersWhole()
    {
        const QString path = QStringLiteral("a<b>&Mới.lua");
        const auto found =
            TPQuickOpenMatch::match(QStringLiteral("moi"), TPQuickOpenMatch::keyOf(path));
        QVERIFY(found);
        QCOMPARE(TPQuickOpenMatch::marked(path, found->positions),
                 QStringLiteral("a&lt;b&gt;&amp;<b>Mới</b>.lua"));
    }
};

QTEST_APPLESS_MAIN(TestTPQuickOpenMatch)
#include "tst_tpquickopenmatch.moc"
