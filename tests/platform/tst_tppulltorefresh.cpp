#include "platform/tppulltorefresh.h"

#include <QSignalSpy>
#include <QTest>

// Pull to refresh: only a pull past the distance, let go, asks for a refresh, once a pull.
class TestTPPullToRefresh : public QObject
{
    Q_OBJECT

private slots:
    void aPullPastTheDistanceRefreshesWhenLetGo()
    {
        TPPullToRefresh pull;
        QSignalSpy refreshes(&pull, &TPPullToRefresh::refreshRequested);
        pull.dragMoved(-30);
        pull.dragMoved(-TPPullToRefresh::PullDistance - 1);
        // Coming back up before letting go still counts: the list was pulled far enough.
        pull.dragMoved(-10);
        QCOMPARE(refreshes.size(), 0);
        pull.dragEnded();
        QCOMPARE(refreshes.size(), 1);
        // The next drag starts afresh.
        pull.dragEnded();
        QCOMPARE(refreshes.size(), 1);
    }

    void aShortPullDoesNotRefresh()
    {
        TPPullToRefresh pull;
        QSignalSpy refreshes(&pull, &TPPullToRefresh::refreshRequested);
        pull.dragMoved(-TPPullToRefresh::PullDistance);
        pull.dragMoved(40);
        pull.dragEnded();
        QCOMPARE(refreshes.size(), 0);
        QVERIFY(!pull.pulledFarEnough());
    }
};

QTEST_MAIN(TestTPPullToRefresh)
#include "tst_tppulltorefresh.moc"
