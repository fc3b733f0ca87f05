#include "editor/tpeditorvc.h"
#include "editor/tphistoryvc.h"
#include "editor/tpkeptentries.h"
#include "editor/tpopenedfiles.h"
#include "editor/tpscripthistory.h"
#include "editor/tpversionvc.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpfolderpickervc.h"
#include "scripts/tpscriptslistvc.h"
#include "tphistorycontents.h"
#include "tpscreenfixture.h"
#include "tpservedfolder.h"

#include <QRandomGenerator>
#include <QTest>

#include <git2.h>

#include <memory>

namespace {

// The newest bytes the history on disk holds for `path`, read straight from its git
// repository, or none: what is there at this very moment, whatever the history's worker is
// doing.
std::optional<QByteArray> recordedOnDisk(const QString &folder, const QString &path)
{
    git_libgit2_init();
    std::optional<QByteArray> found;
    git_repository *repository = nullptr;
    git_object *object = nullptr;
    const QByteArray newest = "refs/heads/main:" + path.toUtf8();
    if (git_repository_open_bare(&repository, QFile::encodeName(folder).constData()) == 0 &&
        git_revparse_single(&object, repository, newest.constData()) == 0 &&
        git_object_type(object) == GIT_OBJECT_BLOB) {
        const auto *blob = reinterpret_cast<const git_blob *>(object);
        found = QByteArray(static_cast<const char *>(git_blob_rawcontent(blob)),
                           qsizetype(git_blob_rawsize(blob)));
    }
    git_object_free(object);
    git_repository_free(repository);
    git_libgit2_shutdown();
    return found;
}

const QByteArray kCrLf("-- farm\r\ntap(1, 2)\r\n");
const QByteArray kBom("\xEF\xBB\xBFprint('bom')\n");
const QByteArray kLatin1("print('caf\xe9')\n");

} // namespace

// What a delete keeps, what brings it back, and what a rename carries along, through the
// scripts list, the folder picker and the history screens.
class TestTPKeptEntries : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpkeptentries"};
    std::unique_ptr<TPNavigationStack> m_stack;
    TPServedFolder m_served;

    TPScriptsListVC *show(const QString &folder)
    {
        auto *list = new TPScriptsListVC(folder);
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        m_stack->setVisible(true);
        return list;
    }

    int rowOf(const TPScriptsListVC *list, const QString &path) const
    {
        for (int row = 0; row < list->rows()->rowCount(); ++row) {
            if (TPEngineAPI::entryPath(list->rows()->entryAt(row)) == path)
                return row;
        }
        return -1;
    }

    bool serveFolder(const QList<std::pair<QString, QByteArray>> &files)
    {
        return m_served.serve(files);
    }
    QString inRoot(const QString &path) const { return m_served.filePath(path); }

    // The list's row menu on `path`, its action titled `title` tapped.
    void tapRowMenu(TPScriptsListVC *list, const QString &path, const QString &title)
    {
        list->onMoreButtonTapped(rowOf(list, path));
        QVERIFY(m_fixture.alert());
        const QStringList titles = m_fixture.actionTitles();
        QVERIFY2(titles.contains(title), qPrintable(titles.join(u',')));
        m_fixture.alert()->triggerAction(int(titles.indexOf(title)));
    }

    // The history's file list as the user sees it: each path, marked when dimmed.
    QStringList historyFiles()
    {
        auto *history = new TPHistoryVC(TPEditorVC::opener());
        m_stack->pushViewController(history);
        // Loaded once the engine's listing has come too.
        if (!QTest::qWaitFor([history] { return !history->loading(); }))
            return {QStringLiteral("<loading>")};
        QStringList shown;
        for (const TPTitledRowsModel::Row &row : history->rows()->rows())
            shown.append(row.title + (row.mark == TPTitledRowsModel::Plain
                                          ? QString()
                                          : u' ' + TPMarkName(row.mark)));
        m_stack->popViewController();
        return shown;
    }

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup()
    {
        m_stack.reset();
        m_served.reset();
    }

    void deletingAFileThatWasNeverReadKeepsItsBytesFirstAndUndoBringsThemBack_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("CR LF") << kCrLf;
        QTest::newRow("byte-order mark") << kBom;
        QTest::newRow("Latin-1") << kLatin1;
        QTest::newRow("empty") << QByteArray();
    }
    void deletingAFileThatWasNeverReadKeepsItsBytesFirstAndUndoBringsThemBack()
    {
        QFETCH(QByteArray, bytes);
        const QString historyFolder = TPScriptHistory::shared()->folder();
        std::optional<QByteArray> keptWhenDeleted;
        m_fixture.engine->setResponder([&](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(R"({"entries":[{"path":"lib","dir":true},)"
                                            R"({"path":"lib/harvest.lua","dir":false}]})");
            if (request.method == "GET")
                return TPScriptedAnswer::ok(bytes);
            if (request.method == "DELETE")
                keptWhenDeleted = recordedOnDisk(historyFolder, QStringLiteral("lib/harvest.lua"));
            return TPScriptedAnswer::ok();
        });
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        m_fixture.engine->clearRequests();
        // The history's worker is busy a while: the delete must wait for the record.
        QByteArray busy(8 * 1024 * 1024, Qt::Uninitialized);
        QRandomGenerator(7).fillRange(reinterpret_cast<quint32 *>(busy.data()),
                                      busy.size() / sizeof(quint32));
        TPScriptHistory::shared()->record(QStringLiteral("busy.lua"), busy);
        list->commitDeleteRow(0);
        QTRY_VERIFY(list->undoBar()->isShown());
        QCOMPARE(m_fixture.alert(), nullptr);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 3);
        QCOMPARE(list->undoBar()->text(), QStringLiteral("Đã xoá harvest.lua"));
        QCOMPARE(list->undoBar()->actionTitle(), QStringLiteral("Hoàn tác"));
        QCOMPARE(keptWhenDeleted, std::optional<QByteArray>(bytes));
        QStringList sent;
        for (const TPRecordedRequest &request : m_fixture.engine->requests())
            sent.append(QString::fromLatin1(request.method) + u' ' + request.path + u'?' +
                        request.rawQuery);
        QCOMPARE(sent, QStringList({"GET /script?name=lib/harvest.lua",
                                    "DELETE /script?name=lib/harvest.lua", "GET /scripts?"}));

        m_fixture.engine->clearRequests();
        list->undoBar()->trigger();
        QVERIFY(!list->undoBar()->isShown());
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 1);
        const QList<TPRecordedRequest> written = m_fixture.requestsTo(QStringLiteral("/script"));
        QCOMPARE(written.size(), 2);
        QCOMPARE(written.at(0).method, QByteArray("POST"));
        QCOMPARE(written.at(0).rawQuery, QStringLiteral("name=lib/harvest.lua"));
        QCOMPARE(written.at(0).body, QByteArray());
        QCOMPARE(written.at(1).rawQuery, QStringLiteral("name=lib/harvest.lua"));
        QCOMPARE(written.at(1).body, bytes);
    }

    // From the list's History, with the engine's folder gone too: the folder is made again,
    // then the file is created with its exact bytes.
    void aDeletedFileThatWasNeverOpenedComesBackFromHistory()
    {
        const QByteArray bytes = kBom + kLatin1 + kCrLf;
        QVERIFY(serveFolder(
            {{QStringLiteral("farm/harvest.lua"), bytes}, {QStringLiteral("main.lua"), "x"}}));
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        tapRowMenu(list, QStringLiteral("farm"), QStringLiteral("Xoá"));
        QTRY_VERIFY(!QFileInfo::exists(inRoot(QStringLiteral("farm"))));
        QTRY_VERIFY(list->undoBar()->isShown());

        list->onHistoryTapped();
        auto *files = qobject_cast<TPHistoryVC *>(m_stack->topViewController());
        QTRY_COMPARE(files->rows()->rowCount(), 1);
        QTRY_VERIFY(files->isDeleted(QStringLiteral("farm/harvest.lua")));
        files->didSelectRow(0);
        auto *versions = qobject_cast<TPHistoryVC *>(m_stack->topViewController());
        QTRY_COMPARE(versions->rows()->rowCount(), 1);
        versions->didSelectRow(0);
        auto *version = qobject_cast<TPVersionVC *>(m_stack->topViewController());
        QTRY_VERIFY(!version->loading());
        version->onRestoreTapped();
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("OK|Đã khôi phục"));
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("farm/harvest.lua"))), bytes);

        // Back in the list of files, the file is there again.
        m_fixture.alert()->triggerAction(0);
        m_stack->popViewController();
        m_stack->popViewController();
        QTRY_VERIFY(!files->isDeleted(QStringLiteral("farm/harvest.lua")));
        QCOMPARE(files->rows()->rows().first().mark, TPTitledRowsModel::Plain);
    }

    void deletingAFolderKeepsEveryFileAndUndoBringsBackEveryFolderAndFile()
    {
        QVERIFY(serveFolder({{QStringLiteral("proj/a.lua"), kCrLf},
                             {QStringLiteral("proj/sub/b.lua"), kBom},
                             {QStringLiteral("proj/sub/deeper/c.lua"), kLatin1},
                             {QStringLiteral("proj/sub/empty.lua"), QByteArray()},
                             {QStringLiteral("proj/nothing/"), QByteArray()},
                             {QStringLiteral("other.lua"), "stays"}}));
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        tapRowMenu(list, QStringLiteral("proj"), QStringLiteral("Xoá"));
        QTRY_VERIFY(list->undoBar()->isShown());
        QVERIFY(!QFileInfo::exists(inRoot(QStringLiteral("proj"))));
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        QCOMPARE(list->undoBar()->text(), QStringLiteral("Đã xoá proj"));
        QCOMPARE(TPHistoryContents(QStringLiteral("proj/sub/deeper/c.lua")),
                 QStringList({QString::fromLatin1(kLatin1.toHex())}));

        list->undoBar()->trigger();
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("proj/a.lua"))), kCrLf);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("proj/sub/b.lua"))), kBom);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("proj/sub/deeper/c.lua"))), kLatin1);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("proj/sub/empty.lua"))), QByteArray());
        QVERIFY(QFileInfo(inRoot(QStringLiteral("proj/nothing"))).isDir());
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("other.lua"))), QByteArray("stays"));
        QCOMPARE(m_fixture.alert(), nullptr);
    }

    void aReadThatFailsBeforeADeleteStillLetsTheDeleteThrough()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(R"({"entries":[{"path":"a.lua","dir":false}]})");
            return request.method == "GET" ? TPScriptedAnswer::withStatus(500)
                                           : TPScriptedAnswer::ok();
        });
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        m_fixture.engine->clearRequests();
        list->commitDeleteRow(0);
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 1);
        const QList<TPRecordedRequest> sent = m_fixture.requestsTo(QStringLiteral("/script"));
        QCOMPARE(sent.size(), 2);
        QCOMPARE(sent.at(1).method, QByteArray("DELETE"));
        QCOMPARE(sent.at(1).rawQuery, QStringLiteral("name=a.lua"));
        QCOMPARE(m_fixture.alert(), nullptr);
        // Nothing was kept, so there is nothing to undo.
        QVERIFY(!list->undoBar()->isShown());
    }

    void aListClosedWhileTheReadBeforeADeleteIsInFlightStillDeletesAndShowsNothing()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(R"({"entries":[{"path":"a.lua","dir":false}]})");
            TPScriptedAnswer answer = TPScriptedAnswer::ok("kept\n");
            answer.delayMs = request.method == "GET" ? 300 : 0;
            return answer;
        });
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        m_fixture.engine->clearRequests();
        list->commitDeleteRow(0);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        m_stack.reset();
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 2);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).at(1).method,
                 QByteArray("DELETE"));
        QVERIFY(m_fixture.engine->flush());
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 0);
        QCOMPARE(m_fixture.alertCount(), 0);
        QCOMPARE(TPHistoryContents(QStringLiteral("a.lua")),
                 QStringList({QString::fromLatin1(QByteArray("kept\n").toHex())}));
    }

    void renamingAFileCarriesItsVersionsRecentsAndFavourites()
    {
        QVERIFY(serveFolder({{QStringLiteral("collect_coins.lua"), "coins\n"}}));
        TPScriptHistory::shared()->record(QStringLiteral("collect_coins.lua"), "first\n");
        TPScriptHistory::shared()->record(QStringLiteral("collect_coins.lua"), "coins\n");
        TPOpenedFiles::recordOpened(QStringLiteral("collect_coins.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("main.lua"));
        TPOpenedFiles::setFavourite(QStringLiteral("collect_coins.lua"), true);
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        list->promptRenameForPath(QStringLiteral("collect_coins.lua"));
        m_fixture.alert()->setText(QStringLiteral("coins.lua"));
        m_fixture.alert()->triggerAction(1);
        QTRY_VERIFY(QFileInfo::exists(inRoot(QStringLiteral("coins.lua"))));
        QTRY_COMPARE(TPOpenedFiles::recents(), QStringList({"main.lua", "coins.lua"}));
        QCOMPARE(TPOpenedFiles::favourites(), QStringList({"coins.lua"}));
        QCOMPARE(TPHistoryContents(QStringLiteral("coins.lua")),
                 QStringList({QString::fromLatin1(QByteArray("coins\n").toHex()),
                              QString::fromLatin1(QByteArray("first\n").toHex())}));
        QCOMPARE(historyFiles(), QStringList({"coins.lua"}));
    }

    void movingAFolderIntoAnotherCarriesEveryFilesVersions()
    {
        QVERIFY(serveFolder({{QStringLiteral("lib/util.lua"), "util\n"},
                             {QStringLiteral("lib/deep/x.lua"), "x\n"},
                             {QStringLiteral("tools/"), QByteArray()}}));
        TPScriptHistory::shared()->record(QStringLiteral("lib/util.lua"), "util\n");
        TPScriptHistory::shared()->record(QStringLiteral("lib/deep/x.lua"), "x\n");
        TPOpenedFiles::setFavourite(QStringLiteral("lib/deep/x.lua"), true);
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        list->pickFolderToMove(QStringLiteral("lib"));
        auto *picker = qobject_cast<TPFolderPickerVC *>(m_stack->topViewController());
        QVERIFY(picker);
        QTRY_COMPARE(picker->rows()->rowCount(), 2);
        QCOMPARE(picker->rows()->rows().at(1).title, QStringLiteral("tools"));
        picker->didSelectRow(1);
        QTRY_COMPARE(m_stack->topViewController(), list);
        QVERIFY(QFileInfo::exists(inRoot(QStringLiteral("tools/lib/deep/x.lua"))));
        QTRY_COMPARE(TPOpenedFiles::favourites(), QStringList({"tools/lib/deep/x.lua"}));
        QCOMPARE(TPHistoryContents(QStringLiteral("tools/lib/deep/x.lua")).size(), 1);
        QCOMPARE(historyFiles(), QStringList({"tools/lib/deep/x.lua", "tools/lib/util.lua"}));
    }

    void movingAFileIntoAFolderCarriesItsVersions()
    {
        QVERIFY(serveFolder({{QStringLiteral("coins.lua"), "c\n"}, {QStringLiteral("farm/"), {}}}));
        TPScriptHistory::shared()->record(QStringLiteral("coins.lua"), "c\n");
        TPOpenedFiles::recordOpened(QStringLiteral("coins.lua"));
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        list->pickFolderToMove(QStringLiteral("coins.lua"));
        auto *picker = qobject_cast<TPFolderPickerVC *>(m_stack->topViewController());
        QTRY_COMPARE(picker->rows()->rowCount(), 2);
        picker->didSelectRow(1);
        QTRY_COMPARE(m_stack->topViewController(), list);
        QTRY_COMPARE(TPOpenedFiles::recents(), QStringList({"farm/coins.lua"}));
        QCOMPARE(TPHistoryContents(QStringLiteral("farm/coins.lua")).size(), 1);
        QCOMPARE(historyFiles(), QStringList({"farm/coins.lua"}));
    }
};

QTEST_MAIN(TestTPKeptEntries)
#include "tst_tpkeptentries.moc"
