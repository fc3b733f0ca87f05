#include "editing/tpedithistory.h"

#include <QTest>

namespace {

// Applies a step's changes in order.
void applyAll(TPScriptText &text, const TPEditHistory::Step &step)
{
    for (const TPTextEdit &edit : step)
        text.apply(edit);
}

} // namespace

// Undo and redo as exact changes, without any view.
class TestTPEditHistory : public QObject
{
    Q_OBJECT

private slots:
    void aRunOfTypingIsOneStep()
    {
        TPScriptText text;
        text.setText(QStringLiteral("x\r\n"));
        TPEditHistory history;
        for (const QChar c : QStringLiteral("abc")) {
            const TPTextEdit edit = text.replace(text.text().size() - 2, 0, QString(c));
            history.record({edit}, true);
        }
        QCOMPARE(text.text(), QStringLiteral("xabc\r\n"));
        applyAll(text, history.takeUndo());
        QCOMPARE(text.text(), QStringLiteral("x\r\n"));
        QVERIFY(!history.canUndo());
        applyAll(text, history.takeRedo());
        QCOMPARE(text.text(), QStringLiteral("xabc\r\n"));
    }

    void closingTheRunStartsANewStep()
    {
        TPScriptText text;
        TPEditHistory history;
        history.record({text.replace(0, 0, QStringLiteral("a"))}, true);
        history.closeRun();
        history.record({text.replace(1, 0, QStringLiteral("b"))}, true);
        applyAll(text, history.takeUndo());
        QCOMPARE(text.text(), QStringLiteral("a"));
        QVERIFY(history.canUndo());
    }

    void aNewStepAfterUndoDropsTheRedo()
    {
        TPScriptText text;
        TPEditHistory history;
        history.record({text.replace(0, 0, QStringLiteral("a"))}, false);
        applyAll(text, history.takeUndo());
        QVERIFY(history.canRedo());
        history.record({text.replace(0, 0, QStringLiteral("b"))}, false);
        QVERIFY(!history.canRedo());
        QCOMPARE(text.text(), QStringLiteral("b"));
    }

    void aStepOfManyChangesUndoesInReverse()
    {
        TPScriptText text;
        text.setText(QStringLiteral("one two one"));
        TPEditHistory history;
        const TPTextEdit first = text.replace(0, 3, QStringLiteral("1"));
        const TPTextEdit second = text.replace(6, 3, QStringLiteral("1"));
        history.record({first, second}, false);
        QCOMPARE(text.text(), QStringLiteral("1 two 1"));
        applyAll(text, history.takeUndo());
        QCOMPARE(text.text(), QStringLiteral("one two one"));
    }
};

QTEST_GUILESS_MAIN(TestTPEditHistory)
#include "tst_tpedithistory.moc"
