#include "platform/tpundobar.h"

#include <QSignalSpy>
#include <QTest>

// The bar that offers to undo what was just done.
class TestTPUndoBar : public QObject
{
    Q_OBJECT

private slots:
    void anOfferShowsItsTextsAndItsActionRunsOnceAfterTheBarWent()
    {
        TPUndoBar bar;
        int undone = 0;
        bool shownWhenUndone = true;
        bar.offer(QStringLiteral("Deleted a.lua"), QStringLiteral("Undo"), [&] {
            ++undone;
            shownWhenUndone = bar.isShown();
        });
        QVERIFY(bar.isShown());
        QCOMPARE(bar.text(), QStringLiteral("Deleted a.lua"));
        QCOMPARE(bar.actionTitle(), QStringLiteral("Undo"));
        bar.trigger();
        bar.trigger();
        QCOMPARE(undone, 1);
        QVERIFY(!shownWhenUndone);
        QVERIFY(!bar.isShown());
    }

    void theBarGoesByItselfAndItsActionWithIt()
    {
        TPUndoBar bar;
        QCOMPARE(bar.timeoutMs(), 6000);
        bar.setTimeoutMs(50);
        bool undone = false;
        bar.offer(QStringLiteral("Deleted a.lua"), QStringLiteral("Undo"), [&] { undone = true; });
        QSignalSpy changed(&bar, &TPUndoBar::changed);
        QVERIFY(changed.wait());
        QVERIFY(!bar.isShown());
        bar.trigger();
        QVERIFY(!undone);
    }

    void aNewOfferReplacesTheOneShownAndDismissingDropsIt()
    {
        TPUndoBar bar;
        QStringList undone;
        bar.offer(QStringLiteral("Deleted a.lua"), QStringLiteral("Undo"),
                  [&] { undone.append(QStringLiteral("a")); });
        bar.offer(QStringLiteral("Deleted b.lua"), QStringLiteral("Undo"),
                  [&] { undone.append(QStringLiteral("b")); });
        QCOMPARE(bar.text(), QStringLiteral("Deleted b.lua"));
        bar.trigger();
        QCOMPARE(undone, QStringList({"b"}));
        bar.offer(QStringLiteral("Deleted c.lua"), QStringLiteral("Undo"),
                  [&] { undone.append(QStringLiteral("c")); });
        bar.dismiss();
        bar.trigger();
        QCOMPARE(undone, QStringList({"b"}));
    }
};

QTEST_GUILESS_MAIN(TestTPUndoBar)
#include "tst_tpundobar.moc"
