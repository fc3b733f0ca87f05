#include "tpeditorvc.h"
#include "tplang.h"
#include "tpnotificationcenter.h"
#include "tpscreenfixture.h"

#include <QFontInfo>
#include <QSettings>
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

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup() { m_editor.reset(); }

    void titleIsTheFileName()
    {
        QCOMPARE(TPEditorVC(QStringLiteral("a/b/c.lua")).title(), QStringLiteral("c.lua"));
        QCOMPARE(TPEditorVC(QStringLiteral("main.lua")).title(), QStringLiteral("main.lua"));
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
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        m_fixture.engine->clearRequests();
        editor->onSaveTapped(); // wait for a later round trip: the read is done by then
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
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        TPPointEngineAPIAtNothing();
        editor->onRunTapped();
        QTRY_COMPARE(m_fixture.alertText(),
                     QString::fromUtf8("Lỗi|Lưu thất bại (engine offline?)"));
        QTest::qWait(200);
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

    void fontIsFixedWidthAt14Points()
    {
        const QFont font = TPEditorVC::editorFont();
        QCOMPARE(font.pointSizeF(), 14.0);
        QVERIFY(QFontInfo(font).fixedPitch());
    }
};

QTEST_MAIN(TestTPEditorVC)
#include "tst_tpeditorvc.moc"
