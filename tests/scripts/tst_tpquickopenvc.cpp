#include "editor/tpeditorvc.h"
#include "editor/tpopenedfiles.h"
#include "foundation/tplang.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpquickopenvc.h"
#include "scripts/tpscriptslistvc.h"
#include "tpscreenfixture.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTest>

namespace {

const QByteArray kListing = "{\"entries\":["
                            "{\"path\":\"main.lua\"},"
                            "{\"path\":\"games\",\"dir\":true},"
                            "{\"path\":\"games/farm\",\"dir\":true},"
                            "{\"path\":\"games/farm/harvest.lua\"},"
                            "{\"path\":\"games/farm/loop.lua\"},"
                            "{\"path\":\"lib\",\"dir\":true},"
                            "{\"path\":\"lib/util.lua\"}"
                            "]}";

// The paths of the rows shown, in order.
QStringList shownPaths(const TPQuickOpenVC *open)
{
    QStringList paths;
    for (const TPQuickOpenRowsModel::Row &row : open->rows()->rows())
        paths.append(row.path);
    return paths;
}

} // namespace

// Quick open: matching as the user types, opening and running a result, and the
// favourites and recent files shown before anything is typed.
class TestTPQuickOpenVC : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpquickopenvc"};
    std::unique_ptr<TPNavigationStack> m_stack;

    // Quick open pushed from the root list of a visible stack, its listing read.
    TPQuickOpenVC *openQuickOpen()
    {
        auto *root = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(root, m_fixture.presenter.get());
        m_stack->setVisible(true);
        root->onQuickOpenTapped();
        auto *open = qobject_cast<TPQuickOpenVC *>(m_stack->topViewController());
        if (!open || !QTest::qWaitFor([open] { return !open->loading(); }))
            return nullptr;
        return open;
    }

    // Types `query` and waits for its results.
    static bool type(TPQuickOpenVC *open, const QString &query)
    {
        open->setQuery(query);
        return QTest::qWaitFor([open, query] { return open->shownQuery() == query; });
    }

private slots:
    void init()
    {
        QVERIFY(m_fixture.setUp());
        m_fixture.serveListing(kListing);
    }
    void cleanup() { m_stack.reset(); }

    void theSearchButtonOpensQuickOpenOverTheWholeListing()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QCOMPARE(open->title(), TPL("quickopen_title"));
        QVERIFY(m_fixture.requestsTo(QStringLiteral("/scripts")).size() >= 1);
        QVERIFY(type(open, QStringLiteral("l")));
        // Files only, never a folder; the name start before a letter in the path.
        QCOMPARE(
            shownPaths(open),
            QStringList({QStringLiteral("games/farm/loop.lua"), QStringLiteral("lib/util.lua"),
                         QStringLiteral("main.lua"), QStringLiteral("games/farm/harvest.lua")}));
    }

    void resultsMarkTheMatchedLettersInTheNameAndTheFolder()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QVERIFY(type(open, QStringLiteral("GFH")));
        QCOMPARE(shownPaths(open), QStringList({QStringLiteral("games/farm/harvest.lua")}));
        const TPQuickOpenRowsModel::Row &row = open->rows()->rows().first();
        QCOMPARE(row.name, QStringLiteral("<b>h</b>arvest.lua"));
        QCOMPARE(row.folder, QStringLiteral("<b>g</b>ames/<b>f</b>arm"));
    }

    void aQueryWithoutMatchesSaysSo()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QVERIFY(type(open, QStringLiteral("zzz")));
        QVERIFY(open->noMatches());
        QVERIFY(type(open, QString()));
        QVERIFY(!open->noMatches());
    }

    // Only the newest query's results are shown, however the workers finish.
    void typingFastShowsTheResultsOfTheLastQuery()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        for (const char *query : {"u", "ut", "uti", "util"})
            open->setQuery(QString::fromLatin1(query));
        // Matched away from the main thread: nothing is shown before the event loop runs.
        QCOMPARE(open->shownQuery(), QString());
        QTRY_COMPARE(open->shownQuery(), QStringLiteral("util"));
        QCOMPARE(shownPaths(open), QStringList({QStringLiteral("lib/util.lua")}));
    }

    // Coming back into view reads the listing again; what the earlier one matched is not
    // carried over to it.
    void aNewListingIsMatchedAfresh()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QVERIFY(type(open, QStringLiteral("ut")));
        m_fixture.serveListing("{\"entries\":[{\"path\":\"a.lua\"},{\"path\":\"b.lua\"},"
                               "{\"path\":\"tools/util_new.lua\"}]}");
        open->viewWillAppear();
        QTRY_VERIFY(!open->loading());
        QVERIFY(type(open, QStringLiteral("util")));
        QCOMPARE(shownPaths(open), QStringList({QStringLiteral("tools/util_new.lua")}));
    }

    void openingAResultPushesItsFoldersAndTheEditorAndBackWalksUpTheTree()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QVERIFY(type(open, QStringLiteral("harvest")));
        open->didSelectRow(0);
        QCOMPARE(m_stack->depth(), 4);
        auto *editor = qobject_cast<TPEditorVC *>(m_stack->topViewController());
        QVERIFY(editor);
        QCOMPARE(editor->relPath(), QStringLiteral("games/farm/harvest.lua"));
        m_stack->popViewController();
        auto *farm = qobject_cast<TPScriptsListVC *>(m_stack->topViewController());
        QVERIFY(farm);
        QCOMPARE(farm->folder(), QStringLiteral("games/farm"));
        QTRY_COMPARE(farm->rows()->rowCount(), 2);
        m_stack->popViewController();
        auto *games = qobject_cast<TPScriptsListVC *>(m_stack->topViewController());
        QVERIFY(games);
        QCOMPARE(games->folder(), QStringLiteral("games"));
        m_stack->popViewController();
        QCOMPARE(m_stack->depth(), 1);
    }

    void runFromAResultSendsTheRunRequest()
    {
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QVERIFY(type(open, QStringLiteral("util")));
        m_fixture.engine->clearRequests();
        open->onRunTapped(0);
        QVERIFY(!open->rows()
                     ->data(open->rows()->index(0), TPQuickOpenRowsModel::RunEnabledRole)
                     .toBool());
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).first().rawQuery,
                 QStringLiteral("name=lib/util.lua"));
        QTRY_VERIFY(open->rows()
                        ->data(open->rows()->index(0), TPQuickOpenRowsModel::RunEnabledRole)
                        .toBool());
    }

    // With nothing typed: the favourites, then the files opened last, each once; a file the
    // listing no longer holds is dimmed and does not open.
    void favouritesThenRecentsShowWithAMissingFileDimmed()
    {
        TPOpenedFiles::recordOpened(QStringLiteral("main.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("gone.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("lib/util.lua"));
        TPOpenedFiles::setFavourite(QStringLiteral("lib/util.lua"), true);
        TPQuickOpenVC *open = openQuickOpen();
        QVERIFY(open);
        QTRY_COMPARE(shownPaths(open),
                     QStringList({QStringLiteral("lib/util.lua"), QStringLiteral("gone.lua"),
                                  QStringLiteral("main.lua")}));
        const QList<TPQuickOpenRowsModel::Row> rows = open->rows()->rows();
        QCOMPARE(rows.at(0).heading, TPL("quickopen_favourites"));
        QCOMPARE(rows.at(1).heading, TPL("quickopen_recents"));
        QVERIFY(!rows.at(0).dimmed);
        QVERIFY(rows.at(1).dimmed);
        QVERIFY(!rows.at(2).dimmed);
        open->didSelectRow(1);
        open->onRunTapped(1);
        QCOMPARE(m_stack->topViewController(), open);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 0);
    }
};

QTEST_MAIN(TestTPQuickOpenVC)
#include "tst_tpquickopenvc.moc"
