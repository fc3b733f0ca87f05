#include "editor/tpcodeeditor.h"
#include "editor/tpdraftstore.h"
#include "editor/tpeditorfont.h"
#include "editor/tpeditorvc.h"
#include "editor/tpopenedfiles.h"
#include "editor/tpscripthistory.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "tpscreenfixture.h"

#include <QFontDatabase>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

class TestTPEditorVC : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpeditorvc"};
    std::unique_ptr<TPEditorVC> m_editor;

    // An editor that has built its view (and so asked for the file) and is on screen.
    TPEditorVC *open(const QString &path)
    {
        m_editor = std::make_unique<TPEditorVC>(path);
        m_editor->setPresenter(m_fixture.presenter.get());
        m_editor->loadViewIfNeeded();
        m_editor->viewWillAppear();
        return m_editor.get();
    }

    // Serves `content` for reads and answers saves and runs with the given statuses.
    void serve(const QByteArray &content, int saveStatus = 200, int runStatus = 200)
    {
        m_fixture.engine->setResponder([=](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/runfile"))
                return TPScriptedAnswer::withStatus(runStatus);
            if (request.method == "POST")
                return TPScriptedAnswer::withStatus(saveStatus);
            return TPScriptedAnswer::ok(content);
        });
    }

    // The notice's action ids, in order.
    static QStringList noticeActions(const TPEditorVC *editor)
    {
        QStringList ids;
        for (const auto &action : editor->notice()->actionList())
            ids.append(action.first);
        return ids;
    }

    // Types `text` over the whole text, as one edit of the user's.
    static void typeOver(TPEditorVC *editor, const QString &text)
    {
        editor->code()->buffer()->applyStep({{0, editor->text(), text}});
    }

    // Serves `content` for reads after answering the first `failures` reads with 404.
    void serveAfterFailures(const QByteArray &content, int failures)
    {
        auto reads = std::make_shared<int>(0);
        m_fixture.engine->setResponder([=](const TPRecordedRequest &request) {
            if (request.method == "GET" && request.path == QLatin1String("/script"))
                return ++*reads <= failures ? TPScriptedAnswer::withStatus(404)
                                            : TPScriptedAnswer::ok(content);
            return TPScriptedAnswer::ok();
        });
    }

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup() { m_editor.reset(); }

    void titleIsTheFileName()
    {
        QCOMPARE(TPEditorVC(QStringLiteral("a/b/c.lua")).title(), QStringLiteral("c.lua"));
        QCOMPARE(TPEditorVC(QStringLiteral("main.lua")).title(), QStringLiteral("main.lua"));
    }

    // Opening a file puts it first among the recent files; the star makes it a favourite,
    // and takes that back.
    void openingIsRecordedAndTheStarTogglesTheFavourite()
    {
        serve("x = 1\n");
        TPEditorVC *editor = open(QStringLiteral("lib/a.lua"));
        QCOMPARE(TPOpenedFiles::recents().first(), QStringLiteral("lib/a.lua"));
        QVERIFY(!editor->isFavourite());
        QSignalSpy changed(editor, &TPEditorVC::favouriteChanged);
        editor->toggleFavourite();
        QVERIFY(editor->isFavourite());
        QVERIFY(TPOpenedFiles::isFavourite(QStringLiteral("lib/a.lua")));
        editor->toggleFavourite();
        QVERIFY(!TPOpenedFiles::isFavourite(QStringLiteral("lib/a.lua")));
        QCOMPARE(changed.size(), 2);
    }

    void loadingFetchesTheFileOnceAndShowsIt()
    {
        serve("tap(1, 2)\n");
        TPEditorVC *editor = open(QStringLiteral("lib/a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("tap(1, 2)\n"));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).first().rawQuery,
                 QStringLiteral("name=lib/a.lua"));
        editor->viewWillDisappear();
        editor->viewWillAppear();
        editor->loadViewIfNeeded();
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 1);
    }

    void emptyReadLeavesTheTextEmptyWithoutAlert()
    {
        serve("");
        TPEditorVC *editor = open(QStringLiteral("empty.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Read);
        m_fixture.engine->clearRequests();
        editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        QCOMPARE(m_fixture.alertCount(), 1);
        QCOMPARE(editor->text(), QString());
    }

    void readErrorShowsEngineOfflineWhateverTheFailure()
    {
        m_fixture.engine->setDefaultAnswer(TPScriptedAnswer::withStatus(404, "not here"));
        TPEditorVC *editor = open(QStringLiteral("missing.lua"));
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("Lỗi|Engine offline (:8090)"));
        QCOMPARE(editor->text(), QString());
    }

    // Unsaved text is kept as a draft within a second of typing; an editor opened later on
    // the same file (after Back, a kill or a crash) offers it, and restores it byte for
    // byte as one undoable edit. Saving removes it.
    void aDraftIsKeptAfterTypingAndRestoredByteExactly()
    {
        const QString tricky = QString::fromUtf8("\xEF\xBB\xBF-- a\r\nb\rc\u00A0d\r\nend");
        serve("old\n");
        TPEditorVC *editor = open(QStringLiteral("lib/a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("old\n"));
        QVERIFY(!editor->notice()->shown());
        typeOver(editor, tricky);
        QTRY_VERIFY(TPDraftStore::read(QStringLiteral("lib/a.lua")));
        QCOMPARE(TPDraftStore::read(QStringLiteral("lib/a.lua"))->bytes, tricky.toUtf8());

        m_editor.reset();
        editor = open(QStringLiteral("lib/a.lua"));
        QTRY_VERIFY(editor->notice()->shown());
        QCOMPARE(editor->text(), QStringLiteral("old\n"));
        QVERIFY2(editor->notice()->text().startsWith(QString::fromUtf8("Thay đổi chưa lưu từ ")),
                 qPrintable(editor->notice()->text()));
        QCOMPARE(noticeActions(editor), QStringList({"restore", "discard"}));
        QCOMPARE(m_fixture.alertCount(), 0);

        editor->notice()->trigger(QStringLiteral("restore"));
        QCOMPARE(editor->text(), tricky);
        QVERIFY(editor->unsavedChanges());
        QVERIFY(!editor->notice()->shown());
        editor->code()->undo();
        QCOMPARE(editor->text(), QStringLiteral("old\n"));
        editor->code()->redo();
        QCOMPARE(editor->text(), tricky);

        editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).last().body, tricky.toUtf8());
        QCOMPARE(TPDraftStore::read(QStringLiteral("lib/a.lua")), std::nullopt);
    }

    // The app quits with a draft's write pending; a new app process offers it and restores
    // it byte for byte.
    void aDraftWrittenAsTheAppQuitsIsRestoredByANewProcess()
    {
        const QString tricky =
            QString::fromUtf8("\xEF\xBB\xBFlocal a = 1\r\nb\rc\u00A0d\u2028e\r\nend");
        QProcess child;
        child.start(QStringLiteral(TP_DRAFT_CHILD),
                    {QStringLiteral("lib/q.lua"), QString::fromLatin1(tricky.toUtf8().toHex()),
                     QCoreApplication::applicationName()});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitCode(), 0);
        QVERIFY(TPDraftStore::read(QStringLiteral("lib/q.lua")));
        QCOMPARE(TPDraftStore::read(QStringLiteral("lib/q.lua"))->bytes, tricky.toUtf8());

        serve("engine\n");
        TPEditorVC *editor = open(QStringLiteral("lib/q.lua"));
        QTRY_VERIFY(editor->notice()->shown());
        editor->notice()->trigger(QStringLiteral("restore"));
        QCOMPARE(editor->text(), tricky);
        editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).last().body, tricky.toUtf8());
    }

    void aDraftIsWrittenAtOnceWhenTheAppLeavesTheForegroundOrTheEditorCloses_data()
    {
        QTest::addColumn<bool>("closes");
        QTest::newRow("background") << false;
        QTest::newRow("back") << true;
    }
    void aDraftIsWrittenAtOnceWhenTheAppLeavesTheForegroundOrTheEditorCloses()
    {
        QFETCH(bool, closes);
        serve("old");
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("old"));
        typeOver(editor, QStringLiteral("typed"));
        QVERIFY(editor->drafts()->writePending());
        QCOMPARE(TPDraftStore::read(QStringLiteral("a.lua")), std::nullopt);
        if (closes)
            m_editor.reset();
        else
            editor->drafts()->onApplicationStateChanged(Qt::ApplicationSuspended);
        QVERIFY(TPDraftStore::read(QStringLiteral("a.lua")));
        QCOMPARE(TPDraftStore::read(QStringLiteral("a.lua"))->bytes, QByteArray("typed"));
    }

    void undoingBackToTheSavedTextClearsTheUnsavedDotAndRemovesTheDraft()
    {
        serve("old");
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("old"));
        typeOver(editor, QStringLiteral("typed"));
        editor->drafts()->flush();
        QVERIFY(TPDraftStore::read(QStringLiteral("a.lua")));
        QVERIFY(editor->unsavedChanges());
        editor->code()->undo();
        QVERIFY(!editor->unsavedChanges());
        QCOMPARE(TPDraftStore::read(QStringLiteral("a.lua")), std::nullopt);
    }

    void discardRemovesTheDraftAndKeepsTheEnginesText()
    {
        QVERIFY(TPDraftStore::write(QStringLiteral("a.lua"), "kept"));
        serve("engine");
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_VERIFY(editor->notice()->shown());
        editor->notice()->trigger(QStringLiteral("discard"));
        QVERIFY(!editor->notice()->shown());
        QCOMPARE(editor->text(), QStringLiteral("engine"));
        QVERIFY(!editor->unsavedChanges());
        QCOMPARE(TPDraftStore::read(QStringLiteral("a.lua")), std::nullopt);
    }

    void aDraftTheEngineAlreadyHasIsNotOffered()
    {
        QVERIFY(TPDraftStore::write(QStringLiteral("a.lua"), "same"));
        serve("same");
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Read);
        QVERIFY(!editor->notice()->shown());
        QCOMPARE(TPDraftStore::read(QStringLiteral("a.lua")), std::nullopt);
    }

    // After a failed read the editor is empty, as described; a bar says so and offers a
    // retry, and Save asks before it replaces the file with the text shown.
    void saveAfterAFailedReadAsksFirstAndCancelSendsNothing()
    {
        serveAfterFailures("engine text", 1);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(m_fixture.alertText(), QStringLiteral("Lỗi|Engine offline (:8090)"));
        m_fixture.alert()->triggerAction(0);
        QCOMPARE(editor->text(), QString());
        QCOMPARE(editor->readState(), TPEditorVC::ReadState::Failed);
        QCOMPARE(editor->notice()->text(), QString::fromUtf8("Không đọc được file này"));
        QCOMPARE(noticeActions(editor), QStringList({"retry"}));

        m_fixture.engine->clearRequests();
        editor->onSaveTapped();
        QCOMPARE(m_fixture.alertText(),
                 QString::fromUtf8("File này chưa được đọc. Thay nó trên engine bằng nội dung "
                                   "đang hiện?|"));
        QCOMPARE(m_fixture.actionTitles(), QStringList({u8"Huỷ", u8"Thay thế"}));
        QCOMPARE(m_fixture.alert()->actions().at(0)->style(), TPAlertAction::Style::Cancel);
        m_fixture.alert()->triggerAction(0);
        QVERIFY(m_fixture.engine->flush());
        QCOMPARE(m_fixture.engine->requests().size(), 0);
    }

    void confirmingTheReplaceSendsTheDescribedSave()
    {
        serveAfterFailures("engine text", 1);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Failed);
        m_fixture.alert()->triggerAction(0);
        typeOver(editor, QStringLiteral("new text"));
        editor->onSaveTapped();
        m_fixture.alert()->triggerAction(1);
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        const TPRecordedRequest save = m_fixture.requestsTo(QStringLiteral("/script")).last();
        QCOMPARE(save.method, QByteArray("POST"));
        QCOMPARE(save.body, QByteArray("new text"));
        // Once agreed, Save behaves as described.
        m_fixture.alert()->triggerAction(0);
        editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
    }

    void runAfterAFailedReadAsksFirstThenSavesAndRuns()
    {
        serveAfterFailures("engine text", 1);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Failed);
        m_fixture.alert()->triggerAction(0);
        m_fixture.engine->clearRequests();
        editor->onRunTapped();
        QVERIFY(m_fixture.alertText().startsWith(QString::fromUtf8("File này chưa được đọc.")));
        m_fixture.alert()->triggerAction(1);
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã chạy"));
        QCOMPARE(m_fixture.engine->requests().size(), 2);
        QCOMPARE(m_fixture.engine->requests().at(0).method, QByteArray("POST"));
        QCOMPARE(m_fixture.engine->requests().at(1).path, QStringLiteral("/runfile"));
    }

    void retryFillsTheTextAndSaveNoLongerAsks()
    {
        serveAfterFailures("print('back')\n", 1);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Failed);
        m_fixture.alert()->triggerAction(0);
        editor->notice()->trigger(QStringLiteral("retry"));
        QTRY_COMPARE(editor->text(), QStringLiteral("print('back')\n"));
        QCOMPARE(editor->readState(), TPEditorVC::ReadState::Read);
        QVERIFY(!editor->notice()->shown());
        QVERIFY(!editor->unsavedChanges());
        editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
    }

    // Text typed before a retry is not lost when the read replaces it: it is on offer as
    // a draft.
    void textTypedBeforeARetryIsOfferedAsADraft()
    {
        serveAfterFailures("engine", 1);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Failed);
        m_fixture.alert()->triggerAction(0);
        typeOver(editor, QStringLiteral("typed while offline"));
        editor->notice()->trigger(QStringLiteral("retry"));
        QTRY_COMPARE(editor->text(), QStringLiteral("engine"));
        QCOMPARE(noticeActions(editor), QStringList({"restore", "discard"}));
        editor->notice()->trigger(QStringLiteral("restore"));
        QCOMPARE(editor->text(), QStringLiteral("typed while offline"));
    }

    // A file that is not UTF-8 reads as the described empty text, without an alert; a bar
    // says why, and Save asks before it would empty the file.
    void aFileThatIsNotUtf8IsShownEmptyAndSaveAsksFirst()
    {
        serve("print('caf\xe9')\n");
        TPEditorVC *editor = open(QStringLiteral("latin1.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::NotText);
        QCOMPARE(editor->text(), QString());
        QCOMPARE(m_fixture.alertCount(), 0);
        QCOMPARE(editor->notice()->text(),
                 QString::fromUtf8("File này không phải văn bản UTF-8 nên không hiện được ở đây"));
        m_fixture.engine->clearRequests();
        editor->onSaveTapped();
        QVERIFY(m_fixture.alertText().startsWith(QString::fromUtf8("File này chưa được đọc.")));
        m_fixture.alert()->triggerAction(0);
        editor->onRunTapped();
        QVERIFY(m_fixture.alertText().startsWith(QString::fromUtf8("File này chưa được đọc.")));
        m_fixture.alert()->triggerAction(0);
        QVERIFY(m_fixture.engine->flush());
        QCOMPARE(m_fixture.engine->requests().size(), 0);

        // Its history keeps the bytes as they came, so that it can be restored.
        std::optional<QList<TPScriptVersion>> versions;
        TPScriptHistory::shared()->versions(
            QStringLiteral("latin1.lua"), this,
            [&versions](const QList<TPScriptVersion> &found) { versions = found; });
        QTRY_VERIFY(versions.has_value());
        QCOMPARE(versions->size(), 1);
        std::optional<QByteArray> kept;
        TPScriptHistory::shared()->contents(
            versions->first().blob, this,
            [&kept](const std::optional<QByteArray> &bytes) { kept = bytes.value_or("<none>"); });
        QTRY_VERIFY(kept.has_value());
        QCOMPARE(*kept, QByteArray("print('caf\xe9')\n"));
    }

    void saveSendsTheWholeTextAndConfirms()
    {
        serve("old");
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("old"));
        editor->setText(QString::fromUtf8("-- mới\nprint(1)"));
        editor->onSaveTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã lưu"));
        const TPRecordedRequest save = m_fixture.requestsTo(QStringLiteral("/script")).last();
        QCOMPARE(save.method, QByteArray("POST"));
        QCOMPARE(save.body, QByteArray("-- m\xe1\xbb\x9bi\nprint(1)"));
    }

    void failedSaveShowsSaveFailureAndKeepsTheText()
    {
        serve("old", 500);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("old"));
        editor->setText(QStringLiteral("new"));
        bool reported = false;
        bool saved = true;
        editor->saveWithCompletion([&](bool ok) {
            reported = true;
            saved = ok;
        });
        QTRY_VERIFY(reported);
        QVERIFY(!saved);
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("Lỗi|Lưu thất bại (engine offline?)"));
        QCOMPARE(editor->text(), QStringLiteral("new"));
    }

    void runWithEngineUnreachableShowsOnlyTheSaveFailure()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->readState(), TPEditorVC::ReadState::Read);
        TPPointEngineAPIAtNothing();
        editor->onRunTapped();
        QTRY_COMPARE(m_fixture.alertText(),
                     QString::fromUtf8("Lỗi|Lưu thất bại (engine offline?)"));
        // Whatever the failed save's completion queued has run by now.
        QCoreApplication::processEvents();
        QCOMPARE(m_fixture.alertCount(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 0);
    }

    void runAfterFailedSaveSendsNoRunRequest()
    {
        serve("x", 500);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("x"));
        editor->onRunTapped();
        QTRY_COMPARE(m_fixture.alertCount(), 1);
        editor->onSaveTapped(); // a later round trip, so a run request would have arrived
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 3);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 0);
    }

    void successfulRunSavesFirstAndShowsOnlyRan()
    {
        serve("x");
        TPEditorVC *editor = open(QStringLiteral("lib/a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("x"));
        editor->setText(QStringLiteral("tap(5, 5)"));
        m_fixture.engine->clearRequests();
        editor->onRunTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã chạy"));
        QCOMPARE(m_fixture.alertCount(), 1);
        QCOMPARE(m_fixture.engine->requests().size(), 2);
        QCOMPARE(m_fixture.engine->requests().at(0).method, QByteArray("POST"));
        QCOMPARE(m_fixture.engine->requests().at(0).body, QByteArray("tap(5, 5)"));
        QCOMPARE(m_fixture.engine->requests().at(1).path, QStringLiteral("/runfile"));
        QCOMPARE(m_fixture.engine->requests().at(1).rawQuery, QStringLiteral("name=lib/a.lua"));
    }

    void failedRunShowsRunFailure()
    {
        serve("x", 200, 500);
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QTRY_COMPARE(editor->text(), QStringLiteral("x"));
        editor->onRunTapped();
        QTRY_COMPARE(m_fixture.alertText(),
                     QString::fromUtf8("Lỗi|Không chạy được (engine offline?)"));
        QCOMPARE(m_fixture.alertCount(), 1);
    }

    void saveAfterTheScreenIsGoneReportsFalseAndShowsNothing()
    {
        serve("x");
        m_fixture.engine->setResponder([](const TPRecordedRequest &) {
            TPScriptedAnswer answer = TPScriptedAnswer::ok();
            answer.delayMs = 200;
            return answer;
        });
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        bool reported = false;
        bool saved = true;
        editor->saveWithCompletion([&](bool ok) {
            reported = true;
            saved = ok;
        });
        m_editor.reset();
        QTRY_VERIFY(reported);
        QVERIFY(!saved);
        QCOMPARE(m_fixture.alertCount(), 0);
    }

    void keyboardBelowTheViewGivesNoInset()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        editor->keyboardWillChangeFrame(QRectF(0, 900, 390, 300), 800);
        QCOMPARE(editor->contentInsets().bottom(), 0.0);
        editor->keyboardWillChangeFrame(QRectF(0, 500, 390, 300), 800);
        QCOMPARE(editor->contentInsets().bottom(), 300.0);
        QCOMPARE(editor->scrollIndicatorInsets(), editor->contentInsets());
    }

    void keyboardNotificationWithoutFrameIsIgnored()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        editor->keyboardWillChangeFrame(QRectF(0, 600, 390, 300), 800);
        editor->keyboardWillChangeFrame(QVariant(), 800);
        QCOMPARE(editor->contentInsets().bottom(), 200.0);
    }

    void hiddenKeyboardResetsOnlyTheBottomInset()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        editor->setContentInsets(QMarginsF(1, 2, 3, 4));
        editor->keyboardWillChangeFrame(QRectF(0, 500, 390, 300), 800);
        QCOMPARE(editor->contentInsets(), QMarginsF(1, 2, 3, 300));
        editor->keyboardWillHide();
        QCOMPARE(editor->contentInsets(), QMarginsF(1, 2, 3, 0));
        QCOMPARE(editor->bottomInset(), 0.0);
    }

    void keyboardIsIgnoredWhileTheEditorIsHidden()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        editor->viewWillDisappear();
        editor->keyboardWillChangeFrame(QRectF(0, 500, 390, 300), 800);
        QCOMPARE(editor->bottomInset(), 0.0);
        editor->viewWillAppear();
        editor->keyboardWillChangeFrame(QRectF(0, 500, 390, 300), 800);
        QCOMPARE(editor->bottomInset(), 300.0);
    }

    void visibleEditorFollowsALanguageChange()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        QCOMPARE(editor->saveTitle(), QString::fromUtf8("Lưu"));
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(editor->saveTitle(), QStringLiteral("Save"));
        QCOMPARE(editor->runTitle(), QStringLiteral("Run"));
    }

    void languageChangedWhileHiddenLeavesTheBarTitles()
    {
        TPEditorVC *editor = open(QStringLiteral("a.lua"));
        editor->viewWillDisappear();
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        editor->viewWillAppear();
        QCOMPARE(editor->saveTitle(), QString::fromUtf8("Lưu"));
        QCOMPARE(editor->runTitle(), QString::fromUtf8("Chạy"));
        QCOMPARE(editor->title(), QStringLiteral("a.lua"));
    }

    // What the editor asks for, whatever fonts this machine has installed: Menlo where it
    // is, otherwise the platform's fixed-width font, at 14 points.
    void fontIsMenloOrThePlatformsFixedFontAt14Points()
    {
        const QFont font = TPEditorFont::base();
        QCOMPARE(font.pointSizeF(), 14.0);
        const QString expected = QFontDatabase::families().contains(QStringLiteral("Menlo"))
                                     ? QStringLiteral("Menlo")
                                     : QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
        QCOMPARE(font.family(), expected);
    }
};

QTEST_MAIN(TestTPEditorVC)
#include "tst_tpeditorvc.moc"
