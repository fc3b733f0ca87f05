#include "editor/tpcodeeditor.h"
#include "editor/tpeditorvc.h"
#include "editor/tphistoryvc.h"
#include "editor/tpscripthistory.h"
#include "editor/tpversionvc.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpscriptslistvc.h"
#include "tpscreenfixture.h"

#include <QTest>

namespace {

QStringList shownRows(const TPTitledRowsModel *rows)
{
    QStringList shown;
    for (const TPTitledRowsModel::Row &row : rows->rows())
        shown.append(TPMarkName(row.mark) + u'|' + row.title + u'|' + row.detail);
    return shown;
}

} // namespace

class TestTPHistoryVC : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tphistoryvc"};
    std::unique_ptr<TPNavigationStack> m_stack;

    void showOnStack(TPViewController *root)
    {
        m_stack = std::make_unique<TPNavigationStack>(root, m_fixture.presenter.get());
        m_stack->setVisible(true);
    }

    template <typename Screen>
    Screen *top() const
    {
        return qobject_cast<Screen *>(m_stack->topViewController());
    }

    // An editor on `path` that read `engineText` and then saved `savedText`: two versions.
    TPEditorVC *editorWithTwoVersions(const QString &path, const QByteArray &engineText,
                                      const QString &savedText)
    {
        m_fixture.engine->setResponder([engineText](const TPRecordedRequest &request) {
            return request.method == "GET" ? TPScriptedAnswer::ok(engineText)
                                           : TPScriptedAnswer::ok();
        });
        auto *editor = new TPEditorVC(path);
        showOnStack(editor);
        if (!QTest::qWaitFor(
                [editor] { return editor->readState() == TPEditorVC::ReadState::Read; }))
            return nullptr;
        editor->code()->buffer()->applyStep({{0, editor->text(), savedText}});
        bool saved = false;
        editor->saveWithCompletion([&saved](bool ok) { saved = ok; });
        if (!QTest::qWaitFor([&saved] { return saved; }))
            return nullptr;
        TPScriptHistory::shared()->waitForIdle();
        return editor;
    }

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup() { m_stack.reset(); }

    // From the editor: the file's versions, newest first, each with its size and the lines
    // it adds and removes against the editor's text.
    void theEditorsHistoryListsTheVersionsAgainstTheText()
    {
        TPEditorVC *editor =
            editorWithTwoVersions(QStringLiteral("a.lua"), "a\nb\n", QStringLiteral("a\nB\nc\n"));
        QVERIFY(editor);
        editor->onHistoryTapped();
        auto *history = top<TPHistoryVC>();
        QVERIFY(history);
        QCOMPARE(history->title(), QStringLiteral("a.lua"));
        QTRY_VERIFY(!history->loading());
        QCOMPARE(history->rows()->rowCount(), 2);
        const QStringList rows = shownRows(history->rows());
        // "+" counts the lines only the editor has, "−" those only the version has.
        QVERIFY2(rows.at(0).endsWith(QString::fromUtf8("|6 byte · +0 −0 so với trình soạn thảo")),
                 qPrintable(rows.at(0)));
        QVERIFY2(rows.at(1).endsWith(QString::fromUtf8("|4 byte · +2 −1 so với trình soạn thảo")),
                 qPrintable(rows.at(1)));
    }

    // A version shows its own text, and its changes against the editor's text as a diff;
    // Restore puts it back in the editor as one undoable edit, unsaved, sending nothing.
    void restoringAVersionIsOneUndoStepInTheEditor()
    {
        TPEditorVC *editor =
            editorWithTwoVersions(QStringLiteral("a.lua"), "a\nb\n", QStringLiteral("a\nB\nc\n"));
        QVERIFY(editor);
        editor->onHistoryTapped();
        QTRY_VERIFY(!top<TPHistoryVC>()->loading());
        top<TPHistoryVC>()->didSelectRow(1);
        auto *version = top<TPVersionVC>();
        QVERIFY(version);
        QTRY_VERIFY(!version->loading());
        QCOMPARE(shownRows(version->lines()), QStringList({"|a|1", "|b|2"}));
        QCOMPARE(shownRows(version->changes()),
                 QStringList({"|a|", "removed|b|", "added|B|", "added|c|"}));
        QVERIFY(!version->noDifferences());

        m_fixture.engine->clearRequests();
        version->onRestoreTapped();
        QCOMPARE(m_stack->topViewController(), editor);
        QCOMPARE(editor->text(), QStringLiteral("a\nb\n"));
        QVERIFY(editor->unsavedChanges());
        editor->code()->undo();
        QCOMPARE(editor->text(), QStringLiteral("a\nB\nc\n"));
        QVERIFY(m_fixture.engine->flush());
        QCOMPARE(m_fixture.engine->requests().size(), 0);
    }

    // From the list: every file recorded, newest change first, a file the engine no longer
    // lists marked deleted. Restoring it creates it again and saves its exact bytes.
    void aDeletedFileIsListedAndRestoredThroughCreateAndSave()
    {
        const QByteArray bytes("\xEF\xBB\xBF-- kept\r\nprint(1)\r\nend");
        TPScriptHistory::shared()->record(QStringLiteral("lib/gone.lua"), bytes);
        TPScriptHistory::shared()->record(QStringLiteral("main.lua"), "x");
        m_fixture.serveListing(R"({"entries":[{"path":"main.lua","dir":false}]})");
        auto *list = new TPScriptsListVC(QString());
        showOnStack(list);
        list->onHistoryTapped();
        auto *files = top<TPHistoryVC>();
        QVERIFY(files);
        QCOMPARE(files->title(), QString::fromUtf8("Lịch sử"));
        QTRY_COMPARE(files->rows()->rowCount(), 2);
        QTRY_VERIFY(files->isDeleted(QStringLiteral("lib/gone.lua")));
        QTRY_COMPARE(files->rows()->rows().at(1).mark, TPTitledRowsModel::Dimmed);
        QCOMPARE(files->rows()->rows().at(0).title, QStringLiteral("main.lua"));
        QCOMPARE(files->rows()->rows().at(0).mark, TPTitledRowsModel::Plain);
        QCOMPARE(files->rows()->rows().at(1).title, QStringLiteral("lib/gone.lua"));
        QVERIFY(files->rows()->rows().at(1).detail.endsWith(QString::fromUtf8(" · đã xoá")));

        files->didSelectRow(1);
        auto *versions = top<TPHistoryVC>();
        // The file's versions are titled with its name.
        QCOMPARE(versions->title(), QStringLiteral("gone.lua"));
        QTRY_COMPARE(versions->rows()->rowCount(), 1);
        versions->didSelectRow(0);
        auto *version = top<TPVersionVC>();
        QTRY_VERIFY(!version->loading());
        m_fixture.engine->clearRequests();
        version->onRestoreTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã khôi phục"));
        const QList<TPRecordedRequest> sent = m_fixture.requestsTo(QStringLiteral("/script"));
        QCOMPARE(sent.size(), 2);
        QCOMPARE(sent.at(0).method, QByteArray("POST"));
        QCOMPARE(sent.at(0).rawQuery, QStringLiteral("name=lib/gone.lua"));
        QCOMPARE(sent.at(0).body, QByteArray());
        QCOMPARE(sent.at(1).rawQuery, QStringLiteral("name=lib/gone.lua"));
        QCOMPARE(sent.at(1).body, bytes);
    }

    // A version that is not text cannot go into an editor: it is saved as it is, once the
    // user agrees, and its bytes reach the engine exactly.
    void aVersionThatIsNotTextIsSavedAsItIsAfterAsking()
    {
        const QByteArray latin1("print('caf\xe9')\n");
        TPScriptHistory::shared()->record(QStringLiteral("latin1.lua"), latin1);
        TPScriptHistory::shared()->waitForIdle();
        m_fixture.serveListing(R"({"entries":[{"path":"latin1.lua","dir":false}]})");
        auto *history =
            new TPHistoryVC(QStringLiteral("latin1.lua"), nullptr, TPEditorVC::opener());
        showOnStack(history);
        QTRY_COMPARE(history->rows()->rowCount(), 1);
        history->didSelectRow(0);
        auto *version = top<TPVersionVC>();
        QTRY_VERIFY(!version->loading());
        m_fixture.engine->clearRequests();
        version->onRestoreTapped();
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("Lưu phiên bản này lên engine?|"));
        QCOMPARE(m_fixture.alert()->actions().at(0)->style(), TPAlertAction::Style::Cancel);
        m_fixture.alert()->triggerAction(1);
        QTRY_COMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã khôi phục"));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).last().body, latin1);
    }

    // From the list of files, a file the engine still lists opens in its editor with the
    // version put in once it is read, unsaved.
    void restoringAListedFileOpensItsEditorWithTheVersion()
    {
        TPScriptHistory::shared()->record(QStringLiteral("main.lua"), "old version\n");
        TPScriptHistory::shared()->waitForIdle();
        m_fixture.engine->setResponder([](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(R"({"entries":[{"path":"main.lua","dir":false}]})");
            return TPScriptedAnswer::ok("engine now\n");
        });
        auto *history = new TPHistoryVC(QStringLiteral("main.lua"), nullptr, TPEditorVC::opener());
        showOnStack(history);
        QTRY_COMPARE(history->rows()->rowCount(), 1);
        history->didSelectRow(0);
        QTRY_VERIFY(!top<TPVersionVC>()->loading());
        top<TPVersionVC>()->onRestoreTapped();
        QTRY_VERIFY(top<TPEditorVC>());
        auto *editor = top<TPEditorVC>();
        QTRY_COMPARE(editor->text(), QStringLiteral("old version\n"));
        QVERIFY(editor->unsavedChanges());
        editor->code()->undo();
        QCOMPARE(editor->text(), QStringLiteral("engine now\n"));
    }

    // With no editor open, a version is compared with the file's newest version: its own
    // text line by line, exactly, and a diff whose "−" lines only it has and "+" lines only
    // the newest has, under a legend naming both.
    void aVersionShowsItsOwnTextAndItsChangesAgainstTheNewestVersion()
    {
        const QByteArray older("a\r\nremoved\r\nb\r\nchange me\r\nc\r\n");
        TPScriptHistory::shared()->record(QStringLiteral("harvest.lua"), older);
        TPScriptHistory::shared()->record(QStringLiteral("harvest.lua"),
                                          "a\r\nb\r\nchanged\r\nc\r\nadded\r\n");
        TPScriptHistory::shared()->waitForIdle();
        auto *history =
            new TPHistoryVC(QStringLiteral("harvest.lua"), nullptr, TPEditorVC::opener());
        showOnStack(history);
        QTRY_COMPARE(history->rows()->rowCount(), 2);
        QVERIFY(history->rows()->rows().at(0).detail.endsWith(
            QString::fromUtf8("+0 −0 so với bản mới nhất")));
        QVERIFY(history->rows()->rows().at(1).detail.endsWith(
            QString::fromUtf8("+2 −2 so với bản mới nhất")));
        history->didSelectRow(1);
        auto *version = top<TPVersionVC>();
        QTRY_VERIFY(!version->loading());
        QCOMPARE(*version->bytes(), older);
        QStringList text;
        for (const TPTitledRowsModel::Row &row : version->lines()->rows())
            text.append(row.title);
        QCOMPARE(text.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"),
                 QString::fromUtf8(older));
        QCOMPARE(version->lines()->rows().at(3).detail, QStringLiteral("4"));

        QVERIFY(!version->showingChanges());
        version->setShowingChanges(true);
        QCOMPARE(shownRows(version->changes()),
                 QStringList({"|a|", "removed|removed|", "|b|", "removed|change me|",
                              "added|changed|", "|c|", "added|added|"}));
        QVERIFY(!version->noDifferences());
        QCOMPARE(version->legend(), QString::fromUtf8("− chỉ ở bản %1 · + chỉ ở bản mới nhất")
                                        .arg(history->rows()->rows().at(1).title));
    }

    void theNewestVersionHasNoDifferencesAndLongUnchangedRunsAreFolded()
    {
        QByteArray older;
        for (int line = 1; line <= 12; ++line)
            older += "line " + QByteArray::number(line) + '\n';
        QByteArray newer = older;
        newer.replace("line 12\n", "twelve\n");
        TPScriptHistory::shared()->record(QStringLiteral("long.lua"), older);
        TPScriptHistory::shared()->record(QStringLiteral("long.lua"), newer);
        auto *history = new TPHistoryVC(QStringLiteral("long.lua"), nullptr, TPEditorVC::opener());
        showOnStack(history);
        QTRY_COMPARE(history->rows()->rowCount(), 2);
        history->didSelectRow(0);
        QTRY_VERIFY(!top<TPVersionVC>()->loading());
        QVERIFY(top<TPVersionVC>()->noDifferences());
        m_stack->popViewController();
        history->didSelectRow(1);
        auto *version = top<TPVersionVC>();
        QTRY_VERIFY(!version->loading());
        QCOMPARE(shownRows(version->changes()).first(),
                 QString::fromUtf8("folded|⋯ 8 dòng không đổi|"));
        QCOMPARE(version->changes()->rowCount(), 6);
    }

    // Reading and saving record a version each, and the same bytes only once.
    void readingAndSavingRecordEachNewVersionOnce()
    {
        TPEditorVC *editor =
            editorWithTwoVersions(QStringLiteral("b.lua"), "one\n", QStringLiteral("one\n"));
        QVERIFY(editor);
        std::optional<QList<TPScriptVersion>> versions;
        QObject context;
        TPScriptHistory::shared()->versions(
            QStringLiteral("b.lua"), &context,
            [&versions](const QList<TPScriptVersion> &found) { versions = found; });
        QTRY_VERIFY(versions.has_value());
        QCOMPARE(versions->size(), 1);
    }
};

QTEST_MAIN(TestTPHistoryVC)
#include "tst_tphistoryvc.moc"
