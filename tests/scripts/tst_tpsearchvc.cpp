#include "editor/tpcodeeditor.h"
#include "editor/tpeditorvc.h"
#include "editor/tpscripttreeindex.h"
#include "foundation/tplang.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpreplacepreviewvc.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpscripttree.h"
#include "scripts/tpsearchvc.h"
#include "tphistorycontents.h"
#include "tpscreenfixture.h"
#include "tpservedfolder.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

const QByteArray kCrLf("sleep(1)\r\nsleep(2)\r\n");
const QByteArray kBom("\xEF\xBB\xBFsleep(3)\n");
const QByteArray kLeftOut("sleep(4)\n");
const QByteArray kLatin1("sleep('caf\xe9')\n");
const QByteArray kNeighbour("tap()\r\n");

// The tree of the replace tests: CR LF, BOM, Latin-1 and a file without a match side by side.
const QList<std::pair<QString, QByteArray>> kReplaceTree = {{"games/a.lua", kCrLf},
                                                            {"b.lua", kBom},
                                                            {"lib/deep/c.lua", kLeftOut},
                                                            {"latin.lua", kLatin1},
                                                            {"d.lua", kNeighbour}};

} // namespace

// The search in all files and its replace, against a real development engine over a
// temporary folder (or a recording engine where a read must fail).
class TestTPSearchVC : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpsearchvc"};
    TPServedFolder m_served;
    std::unique_ptr<TPScriptTreeIndex> m_index;
    std::unique_ptr<TPNavigationStack> m_stack;

    // The search pushed over the root list of a visible stack, every file read.
    TPSearchVC *openSearch()
    {
        m_index = std::make_unique<TPScriptTreeIndex>();
        m_index->enable(&TPScriptTree::filesOf);
        auto *root = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(root, m_fixture.presenter.get());
        m_stack->setVisible(true);
        auto *search = new TPSearchVC(
            [](const QString &folder) { return new TPScriptsListVC(folder); }, m_index.get());
        m_stack->pushViewController(search);
        if (!QTest::qWaitFor([this, search] { return m_index->loaded() && !search->reading(); },
                             10000))
            return nullptr;
        return search;
    }

    // Sets the query and waits for its results.
    static bool find(TPSearchVC *search, const QString &query, bool regex = false,
                     bool matchCase = false)
    {
        search->setRegularExpression(regex);
        search->setCaseSensitive(matchCase);
        search->setQuery(query);
        return QTest::qWaitFor([search, query, regex, matchCase] {
            const TPTextSearch shown = search->shownSearch();
            return shown.pattern() == query && shown.regularExpression() == regex &&
                   shown.caseSensitive() == matchCase;
        });
    }

    // The rows as the user reads them: a file's path, then "line: text" for each match.
    static QStringList shown(const TPSearchVC *search)
    {
        QStringList rows;
        for (const TPSearchRowsModel::Row &row : search->rows()->rows()) {
            switch (row.kind) {
            case TPSearchRowsModel::MatchRow:
                rows.append(QString::number(row.line) + QStringLiteral(": ") + row.title);
                break;
            case TPSearchRowsModel::UnreadRow:
                rows.append(QStringLiteral("unread ") + row.path);
                break;
            case TPSearchRowsModel::NotTextRow:
                rows.append(QStringLiteral("not text ") + row.path);
                break;
            default:
                rows.append(row.path);
            }
        }
        return rows;
    }

    static int rowOf(const TPSearchRowsModel *rows, TPSearchRowsModel::Kind kind,
                     const QString &path)
    {
        for (int row = 0; row < rows->rowCount(); ++row) {
            if (rows->rows().at(row).kind == kind && rows->rows().at(row).path == path)
                return row;
        }
        return -1;
    }

    // Replace all from the search, waiting for its preview.
    TPReplacePreviewVC *preview(TPSearchVC *search)
    {
        search->onReplaceAllTapped();
        if (!QTest::qWaitFor([this] {
                return qobject_cast<TPReplacePreviewVC *>(m_stack->topViewController());
            }))
            return nullptr;
        return qobject_cast<TPReplacePreviewVC *>(m_stack->topViewController());
    }

    // Applies the preview and waits for the summary, which it returns.
    QString apply(TPReplacePreviewVC *preview)
    {
        preview->onApplyTapped();
        if (!QTest::qWaitFor([this] { return m_fixture.alert() != nullptr; }, 10000))
            return QString();
        TPScriptHistory::shared()->waitForIdle();
        return m_fixture.alert()->message();
    }

    QByteArray onDisk(const QString &path) const
    {
        return TPReadFileBytes(m_served.filePath(path));
    }

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup()
    {
        m_stack.reset();
        m_index.reset();
        m_served.reset();
    }

    void plainRegexAndCaseSearchEveryFileOfANestedTree()
    {
        QVERIFY(m_served.serve({{"main.lua", "Tap(1)\nsleep(1)\n"},
                                {"games/farm/harvest.lua", "tap(2)\n  tap(3) -- TAP\n"},
                                {"games/farm/deep/more/x.lua", "local t = tap\n"},
                                {"lib/util.lua", "print('nothing <here>')\n"}}));
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("tap")));
        QCOMPARE(
            shown(search),
            QStringList({"games/farm/deep/more/x.lua", "1: local t = <b>tap</b>",
                         "games/farm/harvest.lua", "1: <b>tap</b>(2)", "2: <b>tap</b>(3) -- TAP",
                         "2: tap(3) -- <b>TAP</b>", "main.lua", "1: <b>Tap</b>(1)"}));
        QCOMPARE(search->status(), TPL("search_summary").arg(5).arg(3));

        QVERIFY(find(search, QStringLiteral("tap"), false, true));
        QCOMPARE(shown(search), QStringList({"games/farm/deep/more/x.lua",
                                             "1: local t = <b>tap</b>", "games/farm/harvest.lua",
                                             "1: <b>tap</b>(2)", "2: <b>tap</b>(3) -- TAP"}));

        QVERIFY(find(search, QStringLiteral("^\\s*tap\\(\\d\\)"), true));
        QCOMPARE(shown(search),
                 QStringList({"games/farm/harvest.lua", "1: <b>tap(2)</b>",
                              "2: <b>  tap(3)</b> -- TAP", "main.lua", "1: <b>Tap(1)</b>"}));

        // The line is shown as text: its markup characters are escaped.
        QVERIFY(find(search, QStringLiteral("nothing")));
        QCOMPARE(shown(search),
                 QStringList({"lib/util.lua", "1: print('<b>nothing</b> &lt;here&gt;')"}));

        QVERIFY(find(search, QStringLiteral("nowhere")));
        QCOMPARE(search->rows()->rowCount(), 0);
        QCOMPARE(search->status(), TPL("search_no_matches"));

        QVERIFY(find(search, QStringLiteral("tap("), true));
        QCOMPARE(search->status(), TPL("search_invalid"));
        QVERIFY(!search->canReplace());
    }

    void typingFastShowsTheResultsOfTheLastQuery()
    {
        QVERIFY(m_served.serve({{"a.lua", "util()\nuse()\n"}}));
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        for (const char *query : {"u", "ut", "uti", "util"})
            search->setQuery(QString::fromLatin1(query));
        QTRY_COMPARE(search->shownSearch().pattern(), QStringLiteral("util"));
        QCOMPARE(shown(search), QStringList({"a.lua", "1: <b>util</b>()"}));
    }

    void aResultOpensItsFileAtTheMatchOverItsFolders()
    {
        QVERIFY(m_served.serve(
            {{"games/farm/harvest.lua", "-- farm\r\nfor i = 1, 3 do\r\n  tap(i)\r\nend\r\n"}}));
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("tap(i)")));
        const int match = rowOf(search->rows(), TPSearchRowsModel::MatchRow,
                                QStringLiteral("games/farm/harvest.lua"));
        QCOMPARE(search->rows()->rows().at(match).line, 3);
        search->didSelectRow(match);
        auto *editor = qobject_cast<TPEditorVC *>(m_stack->topViewController());
        QVERIFY(editor);
        QCOMPARE(editor->relPath(), QStringLiteral("games/farm/harvest.lua"));
        QTRY_VERIFY(!editor->loading());
        const qsizetype at = QStringLiteral("-- farm\r\nfor i = 1, 3 do\r\n  ").size();
        QTRY_COMPARE(editor->code()->buffer()->selection(),
                     (std::pair<qsizetype, qsizetype>(at, at + 6)));
        QCOMPARE(editor->code()->buffer()->text().mid(at, 6), QStringLiteral("tap(i)"));
        // Back walks up the tree: the folders are under the editor, the search is not.
        QCOMPARE(m_stack->depth(), 4);
        m_stack->popViewController();
        auto *farm = qobject_cast<TPScriptsListVC *>(m_stack->topViewController());
        QVERIFY(farm);
        QCOMPARE(farm->folder(), QStringLiteral("games/farm"));
    }

    void progressShowsWhileTheFilesAreRead()
    {
        QList<std::pair<QString, QByteArray>> files;
        for (int file = 0; file < 40; ++file)
            files.append({QStringLiteral("f%1.lua").arg(file), "tap()\n"});
        QVERIFY(m_served.serve(files));
        m_index = std::make_unique<TPScriptTreeIndex>();
        m_index->enable(&TPScriptTree::filesOf);
        auto *root = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(root, m_fixture.presenter.get());
        m_stack->setVisible(true);
        auto *search = new TPSearchVC(
            [](const QString &folder) { return new TPScriptsListVC(folder); }, m_index.get());
        QStringList statuses;
        QList<qreal> progress;
        connect(search, &TPSearchVC::statusChanged, this,
                [&] { statuses.append(search->status()); });
        connect(search, &TPSearchVC::progressChanged, this,
                [&] { progress.append(search->progress()); });
        m_stack->pushViewController(search);
        QVERIFY(search->reading());
        QTRY_VERIFY_WITH_TIMEOUT(!search->reading(), 10000);
        // Shown a few times while the files come, not once for each of them.
        const QString reading = TPL("search_reading");
        const QString readingHead = reading.left(reading.indexOf(QStringLiteral("%1")));
        QVERIFY(std::any_of(statuses.cbegin(), statuses.cend(), [&](const QString &status) {
            return status.startsWith(readingHead) && status.contains(QStringLiteral("40"));
        }));
        QVERIFY(progress.size() < 40);
        QVERIFY(std::is_sorted(progress.cbegin(), progress.cend()));
        QCOMPARE(progress.last(), 1.0);
        QVERIFY(find(search, QStringLiteral("tap")));
        QCOMPARE(search->status(), TPL("search_summary").arg(40).arg(40));
    }

    void aFailedReadIsListedAndRetryReadsIt()
    {
        bool broken = true;
        m_fixture.engine->setResponder([&broken](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(
                    "{\"entries\":[{\"path\":\"a.lua\"},{\"path\":\"broken.lua\"}]}");
            if (request.rawQuery.contains(QLatin1String("broken")))
                return broken ? TPScriptedAnswer::withStatus(500)
                              : TPScriptedAnswer::ok("tap(2)\n");
            return TPScriptedAnswer::ok("tap(1)\n");
        });
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("tap")));
        QCOMPARE(shown(search), QStringList({"a.lua", "1: <b>tap</b>(1)", "unread broken.lua"}));
        const int unread =
            rowOf(search->rows(), TPSearchRowsModel::UnreadRow, QStringLiteral("broken.lua"));
        QCOMPARE(search->rows()->rows().at(unread).detail, TPL("search_unread"));
        broken = false;
        search->onRetryTapped(unread);
        QTRY_COMPARE(shown(search),
                     QStringList({"a.lua", "1: <b>tap</b>(1)", "broken.lua", "1: <b>tap</b>(2)"}));
    }

    void aReloadReadsEveryTextAgain()
    {
        QVERIFY(m_served.serve({{"a.lua", "tap()\n"}}));
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("sleep")));
        QCOMPARE(search->rows()->rowCount(), 0);
        QVERIFY(TPWriteFileBytes(m_served.filePath(QStringLiteral("b.lua")), "sleep()\n"));
        search->onReloadTapped();
        QTRY_COMPARE(shown(search), QStringList({"b.lua", "1: <b>sleep</b>()"}));
    }

    void replaceWithOneFileLeftOutSavesExactlyTheOthers()
    {
        QVERIFY(m_served.serve(kReplaceTree));
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("sleep")));
        // Latin-1 is not UTF-8: never searched, and said so.
        QVERIFY(shown(search).contains(QStringLiteral("not text latin.lua")));
        search->setReplacement(QStringLiteral("wait"));
        TPReplacePreviewVC *replace = preview(search);
        QVERIFY(replace);
        const int leftOut =
            rowOf(replace->rows(), TPSearchRowsModel::FileRow, QStringLiteral("lib/deep/c.lua"));
        QVERIFY(leftOut >= 0);
        QVERIFY(replace->rows()->rows().at(leftOut).included);
        replace->setIncluded(leftOut, false);
        m_fixture.engine->clearRequests();
        const QString summary = apply(replace);
        QCOMPARE(summary, TPL("replace_done").arg(3).arg(2));

        QCOMPARE(onDisk(QStringLiteral("games/a.lua")), QByteArray("wait(1)\r\nwait(2)\r\n"));
        QCOMPARE(onDisk(QStringLiteral("b.lua")), QByteArray("\xEF\xBB\xBFwait(3)\n"));
        QCOMPARE(onDisk(QStringLiteral("lib/deep/c.lua")), kLeftOut);
        QCOMPARE(onDisk(QStringLiteral("latin.lua")), kLatin1);
        QCOMPARE(onDisk(QStringLiteral("d.lua")), kNeighbour);

        // Each saved file has what it had and what it has now in the history.
        QCOMPARE(TPHistoryContents(QStringLiteral("games/a.lua")),
                 QStringList({QString::fromLatin1(QByteArray("wait(1)\r\nwait(2)\r\n").toHex()),
                              QString::fromLatin1(kCrLf.toHex())}));
        QCOMPARE(TPHistoryContents(QStringLiteral("b.lua")),
                 QStringList({QString::fromLatin1(QByteArray("\xEF\xBB\xBFwait(3)\n").toHex()),
                              QString::fromLatin1(kBom.toHex())}));
        QCOMPARE(TPHistoryContents(QStringLiteral("lib/deep/c.lua")), QStringList());

        // Back on the search, which finds what is left.
        QCOMPARE(m_stack->topViewController(), search);
        QTRY_COMPARE(shown(search),
                     QStringList({"lib/deep/c.lua", "1: <b>sleep</b>(4)", "not text latin.lua"}));
    }

    void aFileOpenWithUnsavedTypingIsLeftOutAndACleanOneFollows()
    {
        QVERIFY(m_served.serve(kReplaceTree));
        TPEditorVC typing(QStringLiteral("games/a.lua"));
        TPEditorVC clean(QStringLiteral("b.lua"));
        for (TPEditorVC *editor : {&typing, &clean}) {
            editor->setPresenter(m_fixture.presenter.get());
            editor->loadViewIfNeeded();
        }
        QTRY_VERIFY(!typing.loading() && !clean.loading());
        typing.code()->buffer()->applyStep({{0, QString(), QStringLiteral("-- mine\r\n")}});
        QVERIFY(typing.unsavedChanges());

        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("sleep")));
        search->setReplacement(QStringLiteral("wait"));
        TPReplacePreviewVC *replace = preview(search);
        QVERIFY(replace);
        const int held =
            rowOf(replace->rows(), TPSearchRowsModel::FileRow, QStringLiteral("games/a.lua"));
        QVERIFY(!replace->rows()->rows().at(held).included);
        QVERIFY(!replace->rows()->rows().at(held).includable);
        QVERIFY(replace->rows()->rows().at(held).detail.contains(TPL("replace_unsaved")));
        replace->setIncluded(held, true);
        QVERIFY(!replace->rows()->rows().at(held).included);

        QCOMPARE(apply(replace), TPL("replace_done").arg(2).arg(2));
        QCOMPARE(onDisk(QStringLiteral("games/a.lua")), kCrLf);
        QCOMPARE(typing.text(), QStringLiteral("-- mine\r\nsleep(1)\r\nsleep(2)\r\n"));
        QVERIFY(typing.unsavedChanges());
        QCOMPARE(onDisk(QStringLiteral("latin.lua")), kLatin1);
        // The editor with nothing unsaved shows what the engine has now, as saved.
        QCOMPARE(onDisk(QStringLiteral("b.lua")), QByteArray("\xEF\xBB\xBFwait(3)\n"));
        QCOMPARE(clean.text(), QStringLiteral("\uFEFFwait(3)\n"));
        QVERIFY(!clean.unsavedChanges());
    }

    void aFileChangedOnTheEngineSinceItWasReadIsLeftAlone()
    {
        QVERIFY(m_served.serve(kReplaceTree));
        TPSearchVC *search = openSearch();
        QVERIFY(search);
        QVERIFY(find(search, QStringLiteral("sleep")));
        search->setReplacement(QStringLiteral("wait"));
        TPReplacePreviewVC *replace = preview(search);
        QVERIFY(replace);
        // Someone else (the Web IDE) writes the file between the read and the replace.
        QVERIFY(TPWriteFileBytes(m_served.filePath(QStringLiteral("b.lua")), "sleep(30)\n"));
        const QString summary = apply(replace);
        QVERIFY2(summary.contains(TPL("replace_changed").arg(QStringLiteral("b.lua"))),
                 qPrintable(summary));
        QCOMPARE(onDisk(QStringLiteral("b.lua")), QByteArray("sleep(30)\n"));
        QCOMPARE(onDisk(QStringLiteral("lib/deep/c.lua")), QByteArray("wait(4)\n"));
    }
};

QTEST_MAIN(TestTPSearchVC)
#include "tst_tpsearchvc.moc"
