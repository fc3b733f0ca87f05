#include "editor/tpcodeeditor.h"
#include "editor/tpeditorvc.h"
#include "editor/tpscripttreeindex.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpscripttree.h"
#include "tpscreenfixture.h"
#include "tpservedfolder.h"

#include <QSignalSpy>
#include <QTest>

namespace {

const QByteArray kLatin1("print('caf\xe9')\n");

} // namespace

// The whole tree's texts and globals, read through the engine client.
class TestTPScriptTreeIndex : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpscripttreeindex"};
    TPServedFolder m_served;

    bool serveTree()
    {
        return m_served.serve({{"lib/util.lua", "function helper(x) return x end\nConfig = {}\n"},
                               {"main.lua", "helper(1)\r\ntap(1, 2)\r\ntap(3, 4)\r\nsleep(5)\r\n"},
                               {"games/farm.lua", "tap(5, 6)\nlocal unused = Config\nonlyHere()\n"},
                               {"bad.lua", kLatin1},
                               {"deep/x/y.lua", "sleep(1)\n"}});
    }

    static bool loadedNow(TPScriptTreeIndex &index)
    {
        QSignalSpy changed(&index, &TPScriptTreeIndex::changed);
        index.reload();
        return changed.wait(10000) && !index.loading();
    }

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup() { m_served.reset(); }

    void anIndexNotSwitchedOnReadsNothing()
    {
        TPScriptTreeIndex index;
        index.ensureLoaded();
        index.reload();
        QVERIFY(m_fixture.engine->flush());
        QCOMPARE(m_fixture.engine->requests().size(), 0);
        QVERIFY(!index.loaded());
    }

    void everyFileOfTheTreeIsReadAndKeptExactly()
    {
        QVERIFY(serveTree());
        TPScriptTreeIndex index;
        index.enable(&TPScriptTree::filesOf);
        QVERIFY(loadedNow(index));
        QCOMPARE(index.files(), QStringList({"bad.lua", "deep/x/y.lua", "games/farm.lua",
                                             "lib/util.lua", "main.lua"}));
        QCOMPARE(orNone(index.text(QStringLiteral("main.lua"))),
                 QStringLiteral("helper(1)\r\ntap(1, 2)\r\ntap(3, 4)\r\nsleep(5)\r\n"));
        // Not UTF-8: no text, but it was read.
        QCOMPARE(orNone(index.text(QStringLiteral("bad.lua"))), TPNone);
        QCOMPARE(index.unread(), QStringList());
    }

    void theTreesGlobalsAreThoseScriptsDefineAndTheEnginesRankedByUse()
    {
        QVERIFY(serveTree());
        TPScriptTreeIndex index;
        index.enable(&TPScriptTree::filesOf);
        QVERIFY(loadedNow(index));
        QCOMPARE(index.definedGlobals(),
                 (QList<std::pair<QString, int>>{{"Config", 1}, {"helper", 1}}));
        QCOMPARE(index.engineGlobals(),
                 (QList<std::pair<QString, int>>{{"tap", 3}, {"sleep", 2}, {"onlyHere", 1}}));
    }

    // What a script's lint knows: what any script defines, and what another script uses; a
    // global only this script uses may be a typo.
    void aScriptKnowsWhatTheTreeDefinesAndWhatOtherScriptsUse()
    {
        QVERIFY(serveTree());
        TPScriptTreeIndex index;
        index.enable(&TPScriptTree::filesOf);
        QVERIFY(loadedNow(index));
        QCOMPARE(index.knownGlobalsFor(QStringLiteral("games/farm.lua")),
                 QStringList({"Config", "helper", "sleep", "tap"}));
        QCOMPARE(index.knownGlobalsFor(QStringLiteral("main.lua")),
                 QStringList({"Config", "helper", "onlyHere", "sleep", "tap"}));
    }

    // A reload while one is under way drops the earlier one's answers and still ends.
    void aReloadDuringALoadEndsLoaded()
    {
        QVERIFY(serveTree());
        TPScriptTreeIndex index;
        index.enable(&TPScriptTree::filesOf);
        index.reload();
        QSignalSpy changed(&index, &TPScriptTreeIndex::changed);
        index.reload();
        QVERIFY(changed.wait(10000));
        QTRY_VERIFY(!index.loading());
        QVERIFY(index.loaded());
        QCOMPARE(index.files().size(), 5);
        QCOMPARE(index.engineGlobals().first(), (std::pair<QString, int>{"tap", 3}));
    }

    void aFailedReadIsListedAsUnread()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(R"({"entries":[{"path":"a.lua","dir":false},)"
                                            R"({"path":"b.lua","dir":false}]})");
            return request.rawQuery == QLatin1String("name=b.lua")
                       ? TPScriptedAnswer::withStatus(500)
                       : TPScriptedAnswer::ok("tap(1, 1)\n");
        });
        TPScriptTreeIndex index;
        index.enable(&TPScriptTree::filesOf);
        QVERIFY(loadedNow(index));
        QCOMPARE(index.unread(), QStringList({"b.lua"}));
        QCOMPARE(orNone(index.text(QStringLiteral("a.lua"))), QStringLiteral("tap(1, 1)\n"));
    }

    void aSavedFileUpdatesItsTextAndGlobals()
    {
        QVERIFY(serveTree());
        TPScriptTreeIndex index;
        index.enable(&TPScriptTree::filesOf);
        QVERIFY(loadedNow(index));
        QSignalSpy changed(&index, &TPScriptTreeIndex::changed);
        index.fileSaved(QStringLiteral("games/farm.lua"), QStringLiteral("function farm() end\n"));
        QVERIFY(changed.wait(5000));
        QCOMPARE(orNone(index.text(QStringLiteral("games/farm.lua"))),
                 QStringLiteral("function farm() end\n"));
        QCOMPARE(index.definedGlobals(),
                 (QList<std::pair<QString, int>>{{"helper", 1}, {"Config", 0}, {"farm", 0}}));
        QCOMPARE(index.engineGlobals(), (QList<std::pair<QString, int>>{{"sleep", 2}, {"tap", 2}}));
    }

    // Through the editor: a global another script defines is known, and a misspelt engine
    // function is flagged with the name the other scripts use.
    void theEditorsLintKnowsTheOtherScripts()
    {
        QVERIFY(serveTree());
        QVERIFY(TPWriteFileBytes(m_served.filePath(QStringLiteral("new.lua")),
                                 "helper(2)\nConfig.x = 1\ntpa(1, 2)\n"));
        TPScriptTreeIndex *index = TPScriptTreeIndex::shared();
        index->enable(&TPScriptTree::filesOf);
        auto *editor = new TPEditorVC(QStringLiteral("new.lua"));
        TPNavigationStack stack(editor, m_fixture.presenter.get());
        stack.setVisible(true);
        QTRY_VERIFY_WITH_TIMEOUT(index->loaded() && !index->loading(), 10000);
        TPLintReport *lint = editor->code()->lint();
        QTRY_COMPARE_WITH_TIMEOUT(lint->count(), 1, 5000);
        QCOMPARE(lint->result().warnings.first().name, QStringLiteral("tpa"));
        QCOMPARE(lint->result().warnings.first().suggestion, QStringLiteral("tap"));
        QCOMPARE(lint->message(),
                 QStringLiteral("Dòng 3: `tpa` chưa được biết; có phải ý bạn là `tap`?"));
        index->enable({});
    }
};

QTEST_MAIN(TestTPScriptTreeIndex)
#include "tst_tpscripttreeindex.moc"
