#include "editing/tpeditbuffer.h"
#include "editing/tpluacompletion.h"

#include <QTest>

namespace {

using Source = TPCompletionCandidate::Source;

// The text with "|" for the cursor, taken out.
std::pair<QString, qsizetype> atCursor(const QString &marked)
{
    QString text = marked;
    const qsizetype cursor = text.indexOf(u'|');
    text.remove(cursor, 1);
    return {text, cursor};
}

QList<TPCompletionCandidate> offered(const QString &marked,
                                     const TPLuaCompletion::TreeNames &tree = {}, int limit = 20)
{
    const auto [text, cursor] = atCursor(marked);
    return TPLuaCompletion::candidates(text, cursor, tree, limit);
}

QStringList names(const QList<TPCompletionCandidate> &candidates)
{
    QStringList result;
    for (const TPCompletionCandidate &candidate : candidates)
        result.append(candidate.name);
    return result;
}

const TPCompletionCandidate *find(const QList<TPCompletionCandidate> &candidates,
                                  const QString &name)
{
    for (const TPCompletionCandidate &candidate : candidates) {
        if (candidate.name == name)
            return &candidate;
    }
    return nullptr;
}

} // namespace

// What the editor offers while a name is typed.
class TestTPLuaCompletion : public QObject
{
    Q_OBJECT

private slots:
    void aKeywordIsOfferedWithItsBlock()
    {
        const QList<TPCompletionCandidate> found = offered(QStringLiteral("wh|"));
        QCOMPARE(found.first().name, QStringLiteral("while"));
        QVERIFY(found.first().block);
        QCOMPARE(found.first().source, Source::Library);
    }

    void afterALibrarysDotOnlyItsMembersComeWithTheirParameters()
    {
        const QList<TPCompletionCandidate> found = offered(QStringLiteral("string.fo|"));
        QCOMPARE(names(found), QStringList({"format"}));
        QCOMPARE(found.first().hint, QStringLiteral("string.format(formatstring, ...)"));
        const QList<TPCompletionCandidate> all = offered(QStringLiteral("x = string.|"));
        QCOMPARE(all.size(), 17);
        QVERIFY(!find(all, QStringLiteral("print")));
        QCOMPARE(find(all, QStringLiteral("sub"))->hint, QStringLiteral("string.sub(s, i [, j])"));
    }

    void aLocalInScopeIsOfferedAndOneOutOfScopeIsNot()
    {
        const QString text = QStringLiteral("local function outer(costParam)\n"
                                            "  local costly = 1\n"
                                            "end\n"
                                            "local counter = 0\n"
                                            "for index, cobalt in pairs(t) do\n"
                                            "  co|\n"
                                            "end\n");
        const QList<TPCompletionCandidate> found = offered(text);
        QCOMPARE(find(found, QStringLiteral("counter"))->source, Source::InScope);
        QCOMPARE(find(found, QStringLiteral("cobalt"))->source, Source::InScope);
        QVERIFY(!find(found, QStringLiteral("costly")));
        QVERIFY(!find(found, QStringLiteral("costParam")));
        // A function's parameters are in scope inside it.
        QVERIFY(find(offered(QStringLiteral("function f(alpha, beta)\n  al|\nend\n")),
                     QStringLiteral("alpha")));
        QVERIFY(find(offered(QStringLiteral("function M:run()\n  se|\nend\n")),
                     QStringLiteral("self")));
        // A local declared later is not yet in scope.
        QVERIFY(!find(offered(QStringLiteral("lat|\nlocal later = 1\n")), QStringLiteral("later")));
    }

    // A long file is read once per word: what was read for the first letter serves every
    // letter after it, and gives what reading afresh gives.
    void theFilesNamesReadForAWordHoldWhileOnlyThatWordChanges()
    {
        const QString before = QStringLiteral("local counter = 0\nfunction count(n) end\n");
        const QString after = QStringLiteral("\nlocal later = counter\n");
        const auto read =
            TPLuaCompletion::readFileNames(before + after, before.size(), before.size());
        for (const QString &word :
             {QStringLiteral("c"), QStringLiteral("co"), QStringLiteral("cou")}) {
            const QString text = before + word + after;
            const qsizetype cursor = before.size() + word.size();
            QVERIFY(TPLuaCompletion::holds(*read, text, before.size(), cursor));
            const TPCompletionContext context = TPLuaCompletion::contextAt(text, cursor);
            QCOMPARE(TPLuaCompletion::candidates(context, *read, {}, 20),
                     TPLuaCompletion::candidates(text, cursor, {}, 20));
        }
        QCOMPARE(names(TPLuaCompletion::candidates(
                           TPLuaCompletion::contextAt(before + QStringLiteral("cou") + after,
                                                      before.size() + 3),
                           *read, {}, 20))
                     .first(2),
                 QStringList({"counter", "count"}));
        // A change anywhere else, or a word that started elsewhere, needs a new read.
        QVERIFY(!TPLuaCompletion::holds(*read, before + u'c' + after + u'x', before.size(),
                                        before.size() + 1));
        QVERIFY(!TPLuaCompletion::holds(*read, u'x' + before + u'c' + after, before.size() + 1,
                                        before.size() + 2));
        QVERIFY(!TPLuaCompletion::holds(*read, before + u'c' + after, before.size() - 1,
                                        before.size() + 1));
    }

    void theFilesFunctionsAndFieldsAreOffered()
    {
        const QList<TPCompletionCandidate> functions =
            offered(QStringLiteral("function helper() end\nlocal run = function() end\nhe|\n"));
        QCOMPARE(find(functions, QStringLiteral("helper"))->source, Source::File);
        const QList<TPCompletionCandidate> fields = offered(QStringLiteral(
            "local t = {}\nt.speed = 1\nt.size = 2\nother.skip = 3\nt:start()\nt.s|\n"));
        QCOMPARE(names(fields), QStringList({"size", "speed", "start"}));
    }

    void theTreesGlobalsAreOfferedTheEnginesRankedByUse()
    {
        TPLuaCompletion::TreeNames tree;
        tree.defined = {{"helperFromLib", 2}};
        tree.engine = {{"tapHold", 2}, {"tap", 30}, {"touchDown", 5}};
        const QList<TPCompletionCandidate> defined = offered(QStringLiteral("helperF|"), tree);
        QCOMPARE(defined.first().name, QStringLiteral("helperFromLib"));
        QCOMPARE(defined.first().source, Source::Tree);
        const QList<TPCompletionCandidate> engine = offered(QStringLiteral("t|"), tree);
        QCOMPARE(names(engine).mid(0, 3), QStringList({"tap", "touchDown", "tapHold"}));
    }

    // A prefix before letters in order; then in scope, the file's, the tree's, the
    // library's; then the most used.
    void candidatesRankByMatchThenSourceThenUse()
    {
        TPLuaCompletion::TreeNames tree;
        tree.engine = {{"tpTree", 1}};
        const QString text = QStringLiteral("local tapCount = 1\n"
                                            "function tpHelper() end\n"
                                            "local tpLocal, tpUsed = 1, 2\n"
                                            "print(tpUsed, tpUsed)\n"
                                            "tp|\n");
        const QList<TPCompletionCandidate> found = offered(text, tree);
        QCOMPARE(names(found),
                 QStringList({"tpUsed", "tpLocal", "tpHelper", "tpTree", "tapCount", "type"}));
        QCOMPARE(offered(text, tree, 5).size(), 5);
    }

    void nothingIsOfferedInACommentAStringOrANumber()
    {
        QVERIFY(offered(QStringLiteral("-- ta|")).isEmpty());
        QVERIFY(offered(QStringLiteral("print('ta|")).isEmpty());
        QVERIFY(offered(QStringLiteral("--[[ long\nta|")).isEmpty());
        QVERIFY(offered(QStringLiteral("x = 12|")).isEmpty());
        QVERIFY(offered(QStringLiteral("x = |")).isEmpty());
        QVERIFY(!offered(QStringLiteral("--[[ closed ]] ta|")).isEmpty());
    }

    void aBlockComesWithItsEndAtTheLinesIndentAndTheCursorInside_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("expected");
        QTest::newRow("if") << "if"
                            << "  if | then\r\n    \r\n  end";
        QTest::newRow("for") << "for"
                             << "  for | do\r\n    \r\n  end";
        QTest::newRow("while") << "while"
                               << "  while | do\r\n    \r\n  end";
        QTest::newRow("function") << "function"
                                  << "  function |()\r\n    \r\n  end";
        QTest::newRow("repeat") << "repeat"
                                << "  repeat\r\n    |\r\n  until ";
    }
    void aBlockComesWithItsEndAtTheLinesIndentAndTheCursorInside()
    {
        QFETCH(QString, word);
        QFETCH(QString, expected);
        const QString text = QStringLiteral("x = 1\r\n  ") + word.left(2);
        const TPCompletionContext context = TPLuaCompletion::contextAt(text, text.size());
        const QList<TPCompletionCandidate> found =
            TPLuaCompletion::candidates(text, text.size(), {}, 20);
        const TPCompletionCandidate *block = find(found, word);
        QVERIFY(block && block->block);
        const TPLuaCompletion::Insertion insertion = TPLuaCompletion::insertion(
            text, context, *block, QStringLiteral("  "), QStringLiteral("\r\n"));
        QString result = text;
        result.replace(insertion.edit.offset, insertion.edit.removed.size(),
                       insertion.edit.inserted);
        result.insert(insertion.cursor, u'|');
        QCOMPARE(result, QStringLiteral("x = 1\r\n") + expected);
    }

    // Accepting a candidate changes only the typed letters, as one undo step.
    void anAcceptedCandidateIsOneUndoStepAndTouchesNothingElse()
    {
        const QString text = QStringLiteral("\xFEFF-- caf\u00E9\r\nlocal counter = 1\r\ncou\r\n"
                                            "x = 1\u00A0\r\n");
        TPEditBuffer buffer;
        buffer.setText(text);
        const qsizetype cursor = text.indexOf(QStringLiteral("cou\r\n")) + 3;
        const TPCompletionContext context = TPLuaCompletion::contextAt(text, cursor);
        const QList<TPCompletionCandidate> found = TPLuaCompletion::candidates(text, cursor, {}, 5);
        QCOMPARE(found.first().name, QStringLiteral("counter"));
        const TPLuaCompletion::Insertion insertion =
            TPLuaCompletion::insertion(text, context, found.first(), buffer.indentUnit(),
                                       buffer.script().dominantLineEnding());
        buffer.applyStep({insertion.edit}, insertion.cursor);
        QCOMPARE(buffer.text(),
                 QStringLiteral("\xFEFF-- caf\u00E9\r\nlocal counter = 1\r\ncounter\r\n"
                                "x = 1\u00A0\r\n"));
        QCOMPARE(buffer.selection().second, cursor + 4);
        buffer.undo();
        QCOMPARE(buffer.text(), text);
        QVERIFY(!buffer.canUndo());
    }
};

QTEST_GUILESS_MAIN(TestTPLuaCompletion)
#include "tst_tpluacompletion.moc"
