#include "editor/tpeditorvc.h"
#include "editor/tpopenedfiles.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpfolderpickervc.h"
#include "scripts/tpscriptslistvc.h"
#include "tpscreenfixture.h"

#include <QJsonObject>
#include <QSettings>
#include <QTest>

namespace {

const QByteArray kListing = "{\"entries\":["
                            "{\"path\":\"main.lua\",\"dir\":false},"
                            "{\"path\":\"lib\",\"dir\":true},"
                            "{\"path\":\"lib/a.lua\",\"dir\":false},"
                            "{\"path\":\"lib/sub\",\"dir\":true},"
                            "{\"path\":\"lib/util\",\"dir\":true}"
                            "]}";

QStringList labels(const TPScriptsListVC *list)
{
    QStringList result;
    const TPScriptRowsModel *model = list->rows();
    for (int row = 0; row < model->rowCount(); ++row)
        result.append(model->data(model->index(row), TPScriptRowsModel::LabelRole).toString());
    return result;
}

} // namespace

class TestTPScriptsListVC : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpscriptslistvc"};
    std::unique_ptr<TPNavigationStack> m_stack;

    // A list on `folder` at the root of a visible stack: it has loaded and asked for the
    // listing once.
    TPScriptsListVC *show(const QString &folder)
    {
        auto *list = new TPScriptsListVC(folder);
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        m_stack->setVisible(true);
        return list;
    }

    int indexOfPath(const TPScriptsListVC *list, const QString &path)
    {
        for (int row = 0; row < list->rows()->rowCount(); ++row) {
            if (list->rows()->entryAt(row).toObject().value(QStringLiteral("path")).toString() ==
                path)
                return row;
        }
        return -1;
    }

    // The root list, shown and listed, with `typed` entered in its New File or New Folder
    // prompt and Create tapped; nothing sent since the listing is recorded.
    TPScriptsListVC *createOnRoot(bool isFolder, const QString &typed)
    {
        TPScriptsListVC *list = show(QString());
        if (!QTest::qWaitFor([list] { return list->rows()->rowCount() > 0; }))
            return nullptr;
        m_fixture.engine->clearRequests();
        list->promptNameWithTitle(TPL(isFolder ? "new_folder" : "new_file"),
                                  TPL(isFolder ? "ph_folder_name" : "ph_file_name"), isFolder);
        m_fixture.alert()->setText(typed);
        m_fixture.alert()->triggerAction(1);
        return list;
    }

    // Only the listing request: nothing else was sent since the last clear.
    void verifyOnlyTheListingIsSent(TPScriptsListVC *list)
    {
        list->onRefreshTapped();
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        QCOMPARE(m_fixture.engine->requests().first().path, QStringLiteral("/scripts"));
    }

private slots:
    void init()
    {
        QVERIFY(m_fixture.setUp());
        m_fixture.serveListing(kListing);
    }
    void cleanup() { m_stack.reset(); }

    void rootIsTitledScriptsAndRetitlesOnLanguageChange()
    {
        TPScriptsListVC *root = show(QString());
        QCOMPARE(root->title(), QStringLiteral("Scripts"));
        QSettings().setValue(TPLangKey, QStringLiteral("fr"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        // An unknown language shows the key: proof the title was looked up again.
        QCOMPARE(root->title(), QStringLiteral("tab_scripts"));
    }

    void subFolderIsTitledByItsLastSegmentAndKeepsIt()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib/util"));
        QCOMPARE(list->title(), QStringLiteral("util"));
        QSettings().setValue(TPLangKey, QStringLiteral("fr"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(list->title(), QStringLiteral("util"));
    }

    void appearingFetchesTheListingAndShowsTheFoldersChildren()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(labels(list), QStringList({u8"📁 sub", u8"📁 util", u8"📄 a.lua"}));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 1);
        QCOMPARE(list->folder(), QStringLiteral("lib"));
    }

    void tappingFolderRowPushesListOnItsFullPath()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        list->didSelectRow(indexOfPath(list, QStringLiteral("lib/sub")));
        QCOMPARE(m_stack->depth(), 2);
        auto *pushed = qobject_cast<TPScriptsListVC *>(m_stack->topViewController());
        QVERIFY(pushed);
        QCOMPARE(pushed->folder(), QStringLiteral("lib/sub"));
        QCOMPARE(pushed->title(), QStringLiteral("sub"));
    }

    void tappingFileRowPushesTheEditorOnItsPath()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        list->didSelectRow(indexOfPath(list, QStringLiteral("lib/a.lua")));
        auto *editor = qobject_cast<TPEditorVC *>(m_stack->topViewController());
        QVERIFY(editor);
        QCOMPARE(editor->relPath(), QStringLiteral("lib/a.lua"));
    }

    // A tap on a row swiped open to its Delete closes the swipe and opens nothing; closed,
    // the same tap opens the file.
    void aTapOnASwipedRowOnlyClosesTheSwipe()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        const int row = indexOfPath(list, QStringLiteral("lib/a.lua"));
        QVERIFY(list->onRowTapped(row, true));
        QCOMPARE(m_stack->topViewController(), list);
        QVERIFY(!list->onRowTapped(row, false));
        auto *editor = qobject_cast<TPEditorVC *>(m_stack->topViewController());
        QVERIFY(editor);
        QCOMPARE(editor->relPath(), QStringLiteral("lib/a.lua"));
    }

    // The list's pull to refresh reloads it, with the spinner, once pulled far enough.
    void pullingTheListFarEnoughRefreshesIt()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        m_fixture.engine->clearRequests();
        list->pullToRefresh()->dragMoved(-TPPullToRefresh::PullDistance / 2);
        list->pullToRefresh()->dragEnded();
        QVERIFY(!list->isRefreshing());
        list->pullToRefresh()->dragMoved(-TPPullToRefresh::PullDistance - 8);
        list->pullToRefresh()->dragEnded();
        QVERIFY(list->isRefreshing());
        QTRY_VERIFY(!list->isRefreshing());
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 1);
    }

    void comingBackToTheListReloadsIt()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        list->didSelectRow(indexOfPath(list, QStringLiteral("lib")));
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 2);
        m_stack->popViewController();
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 3);
    }

    void folderRowCannotBeSwipedToDelete()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        const int folderRow = indexOfPath(list, QStringLiteral("lib/sub"));
        QVERIFY(!list->canEditRow(folderRow));
        QVERIFY(!list->rows()
                     ->data(list->rows()->index(folderRow), TPScriptRowsModel::CanEditRole)
                     .toBool());
        list->commitDeleteRow(folderRow);
        m_fixture.engine->clearRequests();
        list->onRefreshTapped();
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 0);
    }

    void swipingFileRowDeletesWithoutConfirmationThenReloads()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        const int fileRow = indexOfPath(list, QStringLiteral("lib/a.lua"));
        QVERIFY(list->canEditRow(fileRow));
        m_fixture.engine->clearRequests();
        list->commitDeleteRow(fileRow);
        QCOMPARE(m_fixture.alert(), nullptr);
        // The file is read first, to be kept in the history.
        QTRY_COMPARE(m_fixture.engine->requests().size(), 3);
        const TPRecordedRequest &keepingRead = m_fixture.engine->requests().at(0);
        QCOMPARE(keepingRead.method, QByteArray("GET"));
        QCOMPARE(keepingRead.rawQuery, QStringLiteral("name=lib/a.lua"));
        const TPRecordedRequest &deletion = m_fixture.engine->requests().at(1);
        QCOMPARE(deletion.method, QByteArray("DELETE"));
        QCOMPARE(deletion.path, QStringLiteral("/script"));
        QCOMPARE(deletion.rawQuery, QStringLiteral("name=lib/a.lua"));
        QCOMPARE(m_fixture.engine->requests().at(2).path, QStringLiteral("/scripts"));
    }

    void failedDeleteShowsOfflineAlert()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        m_fixture.engine->setResponder([](const TPRecordedRequest &) {
            return TPScriptedAnswer::withStatus(409, "folder not empty");
        });
        list->commitDeleteRow(indexOfPath(list, QStringLiteral("lib/a.lua")));
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("Lỗi|Engine offline (:8090)"));
        QCOMPARE(m_fixture.actionTitles(), QStringList({"OK"}));
    }

    void addSheetOffersNewFileNewFolderAndCancel()
    {
        TPScriptsListVC *list = show(QString());
        QQuickItem addButton;
        list->onAddTapped(&addButton);
        TPAlertController *sheet = m_fixture.alert();
        QVERIFY(sheet);
        QCOMPARE(sheet->preferredStyle(), TPAlertController::Style::ActionSheet);
        QCOMPARE(sheet->title(), QString());
        QCOMPARE(sheet->message(), QString());
        QCOMPARE(sheet->anchor(), &addButton);
        QCOMPARE(m_fixture.actionTitles(), QStringList({u8"File mới", u8"Folder mới", u8"Huỷ"}));
        QCOMPARE(sheet->actions().at(2)->style(), TPAlertAction::Style::Cancel);
        sheet->triggerAction(0);
        TPAlertController *prompt = m_fixture.alert();
        QVERIFY(prompt);
        QCOMPARE(prompt->title(), QString::fromUtf8("File mới"));
        QCOMPARE(prompt->placeholder(), QStringLiteral("ten.lua"));
        QVERIFY(prompt->hasTextField());
        QVERIFY(!prompt->autocorrection());
        QVERIFY(!prompt->autocapitalization());
        QCOMPARE(m_fixture.actionTitles(), QStringList({u8"Huỷ", u8"Tạo"}));
    }

    void creatingFileAddsLuaSuffixAndOpensTheEditor()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        list->onAddTapped();
        m_fixture.alert()->triggerAction(0);
        m_fixture.alert()->setText(QStringLiteral("demo"));
        m_fixture.engine->clearRequests();
        m_fixture.alert()->triggerAction(1);
        QTRY_VERIFY(qobject_cast<TPEditorVC *>(m_stack->topViewController()));
        const TPRecordedRequest creation = m_fixture.engine->requests().first();
        QCOMPARE(creation.method, QByteArray("POST"));
        QCOMPARE(creation.path, QStringLiteral("/script"));
        QCOMPARE(creation.rawQuery, QStringLiteral("name=demo.lua"));
        QCOMPARE(creation.body, QByteArray());
        QCOMPARE(qobject_cast<TPEditorVC *>(m_stack->topViewController())->relPath(),
                 QStringLiteral("demo.lua"));
        // The list itself is not reloaded until it is shown again.
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 0);
    }

    // Return in the name prompts submits Create and OK, their default actions.
    void returnSubmitsTheCreateAndRenamePrompts()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        m_fixture.engine->clearRequests();
        list->promptNameWithTitle(TPL("new_folder"), TPL("ph_folder_name"), true);
        m_fixture.alert()->setText(QStringLiteral("made"));
        m_fixture.alert()->submit();
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/mkdir")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/mkdir")).first().rawQuery,
                 QStringLiteral("name=lib/made"));
        list->promptRenameForPath(QStringLiteral("lib/a.lua"));
        // The name is selected without its extension.
        QCOMPARE(m_fixture.alert()->selectionStart(), 0);
        QCOMPARE(m_fixture.alert()->selectionEnd(), 1);
        m_fixture.alert()->setText(QStringLiteral("b.lua"));
        m_fixture.alert()->submit();
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/rename")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/rename")).first().rawQuery,
                 QStringLiteral("from=lib/a.lua&to=lib/b.lua"));
    }

    void creatingFolderSanitizesTheNameAndReloads()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        list->onAddTapped();
        m_fixture.alert()->triggerAction(1);
        QCOMPARE(m_fixture.alert()->placeholder(), QStringLiteral("ten_folder"));
        m_fixture.alert()->setText(QStringLiteral("x y"));
        m_fixture.engine->clearRequests();
        m_fixture.alert()->triggerAction(1);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 2);
        QCOMPARE(m_fixture.engine->requests().at(0).path, QStringLiteral("/mkdir"));
        QCOMPARE(m_fixture.engine->requests().at(0).rawQuery, QStringLiteral("name=x_y"));
        QCOMPARE(m_fixture.engine->requests().at(1).path, QStringLiteral("/scripts"));
        QCOMPARE(m_stack->depth(), 1);
    }

    void creatingInSubFolderJoinsThePath()
    {
        show(QStringLiteral("lib"))->createEntryNamed(QStringLiteral("test.lua"), false);
        // The create, then the editor's read of the new file.
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 2);
        const TPRecordedRequest creation = m_fixture.requestsTo(QStringLiteral("/script")).first();
        QCOMPARE(creation.method, QByteArray("POST"));
        QCOMPARE(creation.rawQuery, QStringLiteral("name=lib/test.lua"));
    }

    void nameOfOnlyDroppedCharactersShowsBadNameAndSendsNothing()
    {
        TPScriptsListVC *list = createOnRoot(false, QStringLiteral("###"));
        QVERIFY(list);
        QCOMPARE(list->rows()->rowCount(), 2);
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("Lỗi|Tên không hợp lệ"));
        verifyOnlyTheListingIsSent(list);
    }

    void failedCreateShowsOfflineAlertAndOpensNothing()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        TPPointEngineAPIAtNothing();
        list->createEntryNamed(QStringLiteral("x.lua"), false);
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("Lỗi|Engine offline (:8090)"));
        QCOMPARE(m_fixture.alertCount(), 1);
        QCOMPARE(m_stack->depth(), 1);
    }

    void unreachableEngineShowsOfflineAlertStopsSpinnerAndKeepsEmptyTable()
    {
        TPPointEngineAPIAtNothing();
        auto *list = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        list->loadViewIfNeeded();
        list->onRefreshControlPulled();
        QVERIFY(list->isRefreshing());
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("Lỗi|Engine offline (:8090)"));
        QVERIFY(!list->isRefreshing());
        QCOMPARE(list->rows()->rowCount(), 0);
    }

    void failedReloadKeepsThePreviousRows()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        m_fixture.engine->setResponder(
            [](const TPRecordedRequest &) { return TPScriptedAnswer::ok("[]"); });
        list->onRefreshTapped();
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("Lỗi|Engine offline (:8090)"));
        QCOMPARE(labels(list), QStringList({u8"📁 lib", u8"📄 main.lua"}));
    }

    void completionAfterThePopChangesAndShowsNothing()
    {
        TPScriptsListVC *root = show(QString());
        QTRY_COMPARE(root->rows()->rowCount(), 2);
        // The pushed list's listing fails late; the root's reload after the pop succeeds
        // later still, with one more file.
        int listings = 1;
        m_fixture.engine->setResponder([&listings](const TPRecordedRequest &) {
            ++listings;
            TPScriptedAnswer answer =
                listings == 2 ? TPScriptedAnswer::withStatus(500)
                              : TPScriptedAnswer::ok("{\"entries\":[{\"path\":\"a.lua\"},"
                                                     "{\"path\":\"b.lua\"},{\"path\":\"c.lua\"}]}");
            answer.delayMs = listings == 2 ? 300 : 600;
            return answer;
        });
        root->didSelectRow(indexOfPath(root, QStringLiteral("lib")));
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 2);
        QPointer<TPViewController> pushed = m_stack->topViewController();
        m_stack->popViewController();
        QTRY_VERIFY(!pushed);
        QTRY_COMPARE(root->rows()->rowCount(), 3);
        QCOMPARE(m_fixture.alertCount(), 0);
    }

    void renameSendsTheSanitizedNameInTheSameFolder()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        list->onMoreButtonTapped(indexOfPath(list, QStringLiteral("lib/a.lua")));
        QCOMPARE(m_fixture.actionTitles(),
                 QStringList({u8"Đổi tên", u8"Xoá", u8"Di chuyển…", u8"Nhân bản",
                              u8"Thêm vào yêu thích", u8"Huỷ"}));
        QCOMPARE(m_fixture.alert()->actions().at(1)->style(), TPAlertAction::Style::Destructive);
        m_fixture.alert()->triggerAction(0);
        QCOMPARE(m_fixture.alert()->title(), QString::fromUtf8("Đổi tên"));
        QCOMPARE(m_fixture.alert()->text(), QStringLiteral("a.lua"));
        QCOMPARE(m_fixture.actionTitles(), QStringList({u8"Huỷ", "OK"}));
        m_fixture.alert()->setText(QStringLiteral("b"));
        m_fixture.engine->clearRequests();
        m_fixture.alert()->triggerAction(1);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 2);
        QCOMPARE(m_fixture.engine->requests().at(0).path, QStringLiteral("/rename"));
        QCOMPARE(m_fixture.engine->requests().at(0).rawQuery,
                 QStringLiteral("from=lib/a.lua&to=lib/b"));
        QCOMPARE(m_fixture.engine->requests().at(1).path, QStringLiteral("/scripts"));
    }

    void newFileOverAnExistingFileAsksFirstAndCancelSendsNothing()
    {
        TPScriptsListVC *list = createOnRoot(false, QStringLiteral("main"));
        QVERIFY(list);
        QCOMPARE(list->rows()->rowCount(), 2);
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("Thay thế main.lua?|"));
        QCOMPARE(m_fixture.actionTitles(), QStringList({u8"Huỷ", u8"Thay thế"}));
        QCOMPARE(m_fixture.alert()->actions().at(0)->style(), TPAlertAction::Style::Cancel);
        m_fixture.alert()->triggerAction(0);
        QCOMPARE(m_fixture.alert(), nullptr);
        verifyOnlyTheListingIsSent(list);
        QCOMPARE(m_stack->depth(), 1);
    }

    void confirmingTheReplaceSendsTheDescribedCreate()
    {
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPScriptsListVC *list = createOnRoot(false, QStringLiteral("main"));
        QVERIFY(list);
        QCOMPARE(list->rows()->rowCount(), 2);
        QCOMPARE(m_fixture.alertText(), QStringLiteral("Replace main.lua?|"));
        m_fixture.alert()->triggerAction(1);
        QTRY_VERIFY(qobject_cast<TPEditorVC *>(m_stack->topViewController()));
        const TPRecordedRequest creation = m_fixture.engine->requests().first();
        QCOMPARE(creation.method, QByteArray("POST"));
        QCOMPARE(creation.rawQuery, QStringLiteral("name=main.lua"));
        QCOMPARE(creation.body, QByteArray());
    }

    void newFolderWithAnExistingNameSaysSoAndSendsNothing_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("named");
        QTest::newRow("a folder") << "lib"
                                  << "lib";
        QTest::newRow("a file") << "main.lua"
                                << "main.lua";
    }
    void newFolderWithAnExistingNameSaysSoAndSendsNothing()
    {
        QFETCH(QString, typed);
        QFETCH(QString, named);
        TPScriptsListVC *list = createOnRoot(true, typed);
        QVERIFY(list);
        QCOMPARE(list->rows()->rowCount(), 2);
        QCOMPARE(m_fixture.alertText(),
                 QString::fromUtf8("Lỗi|Đã có “%1” trong thư mục này").arg(named));
        m_fixture.alert()->triggerAction(0);
        verifyOnlyTheListingIsSent(list);
    }

    void newFileNamedLikeAFolderSaysSoAndSendsNothing()
    {
        m_fixture.serveListing(R"({"entries":[{"path":"old.lua","dir":true}]})");
        TPScriptsListVC *list = createOnRoot(false, QStringLiteral("old"));
        QVERIFY(list);
        QCOMPARE(list->rows()->rowCount(), 1);
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("Lỗi|Đã có “old.lua” trong thư mục này"));
        m_fixture.alert()->triggerAction(0);
        verifyOnlyTheListingIsSent(list);
    }

    void renameOntoAnExistingNameSaysSoAndSendsNothing_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("a folder") << "sub";
        QTest::newRow("a file") << "a.lua";
    }
    void renameOntoAnExistingNameSaysSoAndSendsNothing()
    {
        QFETCH(QString, typed);
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        m_fixture.engine->clearRequests();
        list->promptRenameForPath(QStringLiteral("lib/util"));
        m_fixture.alert()->setText(typed);
        m_fixture.alert()->triggerAction(1);
        QCOMPARE(m_fixture.alertText(),
                 QString::fromUtf8("Lỗi|Đã có “%1” trong thư mục này").arg(typed));
        m_fixture.alert()->triggerAction(0);
        verifyOnlyTheListingIsSent(list);
    }

    void renameToTheSameOrAnEmptyNameSendsNothing()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        m_fixture.engine->clearRequests();
        for (const QString &typed : {QStringLiteral("a.lua"), QStringLiteral("###")}) {
            list->promptRenameForPath(QStringLiteral("lib/a.lua"));
            m_fixture.alert()->setText(typed);
            m_fixture.alert()->triggerAction(1);
            QCOMPARE(m_fixture.alert(), nullptr);
        }
        verifyOnlyTheListingIsSent(list);
    }

    void rowRunDisablesItsButtonAndReportsFailureOnly()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        const int fileRow = indexOfPath(list, QStringLiteral("main.lua"));
        list->onRunButtonTapped(indexOfPath(list, QStringLiteral("lib")));
        list->onRunButtonTapped(fileRow);
        QVERIFY(!list->rows()->isRunEnabled(fileRow));
        QTRY_VERIFY(list->rows()->isRunEnabled(fileRow));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).first().rawQuery,
                 QStringLiteral("name=main.lua"));
        QCOMPARE(m_fixture.alert(), nullptr);

        m_fixture.engine->setResponder(
            [](const TPRecordedRequest &) { return TPScriptedAnswer::withStatus(404); });
        list->onRunButtonTapped(fileRow);
        QTRY_COMPARE(m_fixture.alertText(),
                     QString::fromUtf8("Lỗi|Không chạy được (engine offline?)"));
    }

    void rowButtonsAreMadeByTheButtonFactory()
    {
        TPScriptsListVC list{QString()};
        const QList<TPRowButton> file = list.rowButtonsForDir(false);
        const QList<TPRowButton> folder = list.rowButtonsForDir(true);
        QCOMPARE(file.size(), 2);
        QCOMPARE(file.at(0), list.accBtnTitle(QString::fromUtf8("Chạy"), TPRowButtonKind::Tint,
                                              TPRowButtonKind::Run));
        QCOMPARE(file.at(1).action, TPRowButtonKind::More);
        QCOMPARE(folder.size(), 1);
        QCOMPARE(folder.at(0).title, QString::fromUtf8("⋯"));
        QCOMPARE(folder.at(0).accessibleName, QString::fromUtf8("Tuỳ chọn khác"));
    }

    // The menu points at the button that opened it; a long press points it at the row's
    // last button, which is the menu's.
    void aRowMenuPointsAtItsMenuButton()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        const int fileRow = indexOfPath(list, QStringLiteral("main.lua"));
        const int folderRow = indexOfPath(list, QStringLiteral("lib"));
        QQuickItem first;
        QQuickItem second;
        list->onRowButtonTapped(TPRowButtonKind::More, fileRow, &second);
        QCOMPARE(m_fixture.alert()->anchor(), &second);
        m_fixture.alert()->dismissByCancel();
        list->onRowPressedAndHeld(fileRow, &first, &second);
        QCOMPARE(m_fixture.alert()->anchor(), &second);
        m_fixture.alert()->dismissByCancel();
        list->onRowPressedAndHeld(folderRow, &first, &second);
        QCOMPARE(m_fixture.alert()->anchor(), &first);
        m_fixture.alert()->dismissByCancel();
        QCOMPARE(m_fixture.alert(), nullptr);
    }

    void rowRunButtonIsDisabledUntilTheAnswer()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        const int fileRow = indexOfPath(list, QStringLiteral("main.lua"));
        const QModelIndex index = list->rows()->index(fileRow);
        m_fixture.engine->setResponder([](const TPRecordedRequest &) {
            TPScriptedAnswer answer = TPScriptedAnswer::withStatus(500);
            answer.delayMs = 300;
            return answer;
        });
        const auto runEnabled = [&index] {
            return index.data(TPScriptRowsModel::ButtonsRole)
                .toList()
                .at(0)
                .value<TPRowButton>()
                .enabled;
        };
        list->onRowButtonTapped(TPRowButtonKind::Run, fileRow);
        QCOMPARE(runEnabled(), false);
        // The menu button stays enabled.
        QCOMPARE(
            index.data(TPScriptRowsModel::ButtonsRole).toList().at(1).value<TPRowButton>().enabled,
            true);
        QTRY_COMPARE(runEnabled(), true);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 1);
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("Lỗi|Không chạy được (engine offline?)"));
    }

    void rowMenuDeletesAFolderAndReloads()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        m_fixture.engine->clearRequests();
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("lib/sub")));
        QCOMPARE(m_fixture.actionTitles(),
                 QStringList({u8"Đổi tên", u8"Xoá", u8"Di chuyển…", u8"Huỷ"}));
        m_fixture.alert()->triggerAction(1);
        // The listing tells what the folder holds, to be kept in the history first; it holds
        // no file here.
        QTRY_COMPARE(m_fixture.engine->requests().size(), 3);
        QCOMPARE(m_fixture.engine->requests().at(0).path, QStringLiteral("/scripts"));
        QCOMPARE(m_fixture.engine->requests().at(1).method, QByteArray("DELETE"));
        QCOMPARE(m_fixture.engine->requests().at(1).rawQuery, QStringLiteral("name=lib/sub"));
        QCOMPARE(m_fixture.engine->requests().at(2).path, QStringLiteral("/scripts"));
    }

    void rowMenuRenamesAFolderAndReloads()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        m_fixture.engine->clearRequests();
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("lib/util")));
        m_fixture.alert()->triggerAction(0);
        QCOMPARE(m_fixture.alert()->text(), QStringLiteral("util"));
        m_fixture.alert()->setText(QStringLiteral("tools"));
        m_fixture.alert()->triggerAction(1);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 2);
        QCOMPARE(m_fixture.engine->requests().at(0).rawQuery,
                 QStringLiteral("from=lib/util&to=lib/tools"));
        QCOMPARE(m_fixture.engine->requests().at(1).path, QStringLiteral("/scripts"));
    }

    void theRowMenuAddsMoveAndForAFileDuplicateBesideRenameAndDelete()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("lib/sub")));
        QCOMPARE(m_fixture.actionTitles(), QStringList({TPL("menu_rename"), TPL("menu_delete"),
                                                        TPL("menu_move"), TPL("cancel")}));
        m_fixture.alert()->triggerAction(3);
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("lib/a.lua")));
        QCOMPARE(m_fixture.actionTitles(),
                 QStringList({TPL("menu_rename"), TPL("menu_delete"), TPL("menu_move"),
                              TPL("menu_duplicate"), TPL("menu_favourite_add"), TPL("cancel")}));
        // The star is kept for quick open, and the menu then offers to take it off.
        m_fixture.alert()->triggerAction(4);
        QVERIFY(TPOpenedFiles::isFavourite(QStringLiteral("lib/a.lua")));
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("lib/a.lua")));
        QCOMPARE(m_fixture.actionTitles().at(4), TPL("menu_favourite_remove"));
        m_fixture.alert()->triggerAction(4);
        QVERIFY(!TPOpenedFiles::isFavourite(QStringLiteral("lib/a.lua")));
    }

    // The copy has the file's bytes exactly (a byte-order mark, CR LF, no final line break)
    // and the first copy name the folder does not hold.
    void duplicateCopiesTheExactBytesUnderTheNextFreeName()
    {
        const QByteArray bytes = "\xef\xbb\xbf-- a\r\nprint(1)\r\n\r\nreturn 1";
        const QByteArray listing = "{\"entries\":[{\"path\":\"main.lua\"},"
                                   "{\"path\":\"main_copy.lua\"}]}";
        m_fixture.engine->setResponder([&](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(listing);
            return request.method == "GET" ? TPScriptedAnswer::ok(bytes) : TPScriptedAnswer::ok();
        });
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        m_fixture.engine->clearRequests();
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("main.lua")));
        m_fixture.alert()->triggerAction(3);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 4);
        const QList<TPRecordedRequest> sent = m_fixture.engine->requests();
        QCOMPARE(sent.at(0).method + ' ' + sent.at(0).rawQuery.toUtf8(),
                 QByteArray("GET name=main.lua"));
        QCOMPARE(sent.at(1).method + ' ' + sent.at(1).rawQuery.toUtf8(),
                 QByteArray("POST name=main_copy_2.lua"));
        QCOMPARE(sent.at(1).body, QByteArray());
        QCOMPARE(sent.at(2).method + ' ' + sent.at(2).rawQuery.toUtf8(),
                 QByteArray("POST name=main_copy_2.lua"));
        QCOMPARE(sent.at(2).body, bytes);
        QCOMPARE(sent.at(3).path, QStringLiteral("/scripts"));
    }

    void aFailedReadDuplicatesNothing()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(kListing);
            return TPScriptedAnswer::withStatus(404);
        });
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        m_fixture.engine->clearRequests();
        list->duplicateFile(QStringLiteral("main.lua"));
        QTRY_VERIFY(m_fixture.alert());
        QCOMPARE(m_fixture.alertText(), TPL("alert_error") + u'|' + TPL("err_offline"));
        QCOMPARE(m_fixture.engine->requests().size(), 1);
    }

    void moveSendsOneRenameIntoTheChosenFolderAndComesBack()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        list->onRowButtonTapped(TPRowButtonKind::More,
                                indexOfPath(list, QStringLiteral("lib/a.lua")));
        m_fixture.alert()->triggerAction(2);
        auto *picker = qobject_cast<TPFolderPickerVC *>(m_stack->topViewController());
        QVERIFY(picker);
        QTRY_COMPARE(picker->targets(),
                     QStringList({QString(), QStringLiteral("lib"), QStringLiteral("lib/sub"),
                                  QStringLiteral("lib/util")}));
        // The folder it is in is shown dimmed, and choosing it sends nothing.
        QCOMPARE(picker->rows()->rows().at(1).mark, TPTitledRowsModel::Dimmed);
        m_fixture.engine->clearRequests();
        picker->didSelectRow(1);
        picker->didSelectRow(2);
        QTRY_COMPARE(m_stack->depth(), 1);
        QCOMPARE(m_fixture.engine->requests().first().path, QStringLiteral("/rename"));
        QCOMPARE(m_fixture.engine->requests().first().rawQuery,
                 QStringLiteral("from=lib/a.lua&to=lib/sub/a.lua"));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/rename")).size(), 1);
        // Back on the list, which reloads.
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 1);
    }

    void aFolderIsNotOfferedAMoveIntoItselfOrItsSubfolders()
    {
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        list->pickFolderToMove(QStringLiteral("lib"));
        auto *picker = qobject_cast<TPFolderPickerVC *>(m_stack->topViewController());
        QVERIFY(picker);
        QTRY_VERIFY(!picker->loading() && !picker->targets().isEmpty());
        QCOMPARE(picker->targets(), QStringList({QString()}));
    }

    void movingOntoAnExistingNameSaysSoAndSendsNothing()
    {
        m_fixture.serveListing("{\"entries\":[{\"path\":\"a.lua\"},{\"path\":\"lib\",\"dir\":1},"
                               "{\"path\":\"lib/a.lua\"}]}");
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        list->pickFolderToMove(QStringLiteral("lib/a.lua"));
        auto *picker = qobject_cast<TPFolderPickerVC *>(m_stack->topViewController());
        QVERIFY(picker);
        QTRY_COMPARE(picker->targets(), QStringList({QString(), QStringLiteral("lib")}));
        m_fixture.engine->clearRequests();
        picker->didSelectRow(0);
        QCOMPARE(m_fixture.alertText(),
                 TPL("alert_error") + u'|' + TPL("guard_exists").arg(QStringLiteral("a.lua")));
        verifyOnlyTheListingIsSent(list);
    }

    void reloadingShowsUntilTheListingArrives()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &) {
            TPScriptedAnswer answer = TPScriptedAnswer::ok(kListing);
            answer.delayMs = 300;
            return answer;
        });
        TPScriptsListVC *list = show(QString());
        QVERIFY(list->isReloading());
        list->onRefreshTapped();
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 2);
        QTRY_VERIFY(!list->isReloading());
        QCOMPARE(list->rows()->rowCount(), 2);
    }

    void searchNarrowsTheRowsIgnoringCaseAndClearingRestoresThem()
    {
        TPScriptsListVC *list = show(QStringLiteral("lib"));
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        list->setSearchText(QStringLiteral("UT"));
        QCOMPARE(labels(list), QStringList({QString::fromUtf8("📁 util")}));
        // Row numbers are those of the rows shown.
        list->didSelectRow(0);
        QCOMPARE(qobject_cast<TPScriptsListVC *>(m_stack->topViewController())->folder(),
                 QStringLiteral("lib/util"));
        m_stack->popViewController();
        list->setSearchText(QString());
        QCOMPARE(labels(list), QStringList({QString::fromUtf8("📁 sub"), QString::fromUtf8("📁 util"),
                                            QString::fromUtf8("📄 a.lua")}));
    }

    void namesThatCannotTravelInTheUrlAreMarked()
    {
        m_fixture.serveListing(
            QByteArray("{\"entries\":[{\"path\":\"t\xe1\xbb\x87p vi\xe1\xbb\x87t.lua\"},"
                       "{\"path\":\"a b.lua\"},{\"path\":\"ok.lua\"}]}"));
        TPScriptsListVC *list = show(QString());
        QTRY_COMPARE(list->rows()->rowCount(), 3);
        const TPScriptRowsModel *model = list->rows();
        QStringList marked;
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->index(row).data(TPScriptRowsModel::UnreachableRole).toBool())
                marked.append(model->index(row).data(TPScriptRowsModel::PathRole).toString());
        }
        QCOMPARE(marked,
                 QStringList({QStringLiteral("a b.lua"), QString::fromUtf8("tệp việt.lua")}));
        QVERIFY(!list->texts().value(QStringLiteral("unreachable")).toString().isEmpty());
    }

    void rowTextsFollowTheCurrentLanguage()
    {
        TPScriptsListVC *list = show(QString());
        QCOMPARE(list->texts().value(QStringLiteral("delete")).toString(),
                 QString::fromUtf8("Xoá"));
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(list->texts().value(QStringLiteral("delete")).toString(),
                 QStringLiteral("Delete"));
        QCOMPARE(list->rowButtonsForDir(false).at(0).title, QStringLiteral("Run"));
    }

    void alertTextsFollowTheCurrentLanguage()
    {
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPScriptsListVC *list = show(QString());
        list->onAddTapped();
        QCOMPARE(m_fixture.actionTitles(), QStringList({"New File", "New Folder", "Cancel"}));
    }
};

QTEST_MAIN(TestTPScriptsListVC)
#include "tst_tpscriptslistvc.moc"
