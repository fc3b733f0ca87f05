#include "app/appdelegate.h"
#include "app/tpappwindow.h"
#include "scripts/tpscriptslistvc.h"
#include "tpscreenfixture.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QTest>

class TestTPAppWindow : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpappwindow"};

private slots:
    void initTestCase() { QQuickStyle::setStyle(QStringLiteral("Basic")); }
    void init() { QVERIFY(m_fixture.setUp()); }

    void theWindowIsMadeForTheDelegate()
    {
        AppDelegate delegate;
        QQmlEngine engine;
        const TPAppWindow window(engine, delegate);
        QVERIFY2(window.window(), qPrintable(window.errorString()));
        QCOMPARE(window.window()->property("app").value<AppDelegate *>(), &delegate);
        QVERIFY(window.window()->isVisible());
    }

    // The list's page is read on the loader thread while the window is built, without the
    // tabs asking: once read, the engine has it, and a component for it is ready at once.
    void theFirstScreensPageIsReadWhileTheWindowIsBuilt()
    {
        AppDelegate delegate;
        QQmlEngine engine;
        const TPAppWindow window(engine, delegate);
        QVERIFY(window.window());
        QVERIFY(delegate.tabBarController() == nullptr);
        QTRY_VERIFY(window.firstPageRead());
        QVERIFY(QQmlComponent(&engine, TPScriptsListVC::pageUrl(), QQmlComponent::Asynchronous)
                    .isReady());
    }
};

QTEST_MAIN(TestTPAppWindow)
#include "tst_tpappwindow.moc"
