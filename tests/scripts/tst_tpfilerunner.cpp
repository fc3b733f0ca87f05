#include "foundation/tplang.h"
#include "platform/tpviewcontroller.h"
#include "scripts/tpfilerunner.h"
#include "tpscreenfixture.h"

#include <QSignalSpy>
#include <QTest>

namespace {

// The least a screen is: the runner shows its alerts on it.
class PlainScreen : public TPViewController
{
public:
    QUrl viewUrl() const override { return {}; }
};

} // namespace

// Running a file from a list: one run at a time per file, and a refused run said on the screen.
class TestTPFileRunner : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpfilerunner"};

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }

    void aFileIsNotRunAgainWhileItsRunIsInFlight()
    {
        // The engine answers late: the second tap arrives while the first run is in flight.
        m_fixture.engine->setResponder([](const TPRecordedRequest &) {
            return TPScriptedAnswer{200, {}, 300, TPScriptedAnswer::Fault::None};
        });
        PlainScreen screen;
        screen.setPresenter(m_fixture.presenter.get());
        TPFileRunner runner(&screen);
        QSignalSpy changes(&runner, &TPFileRunner::runningChanged);
        const QString path = QStringLiteral("games/farm.lua");
        runner.run(path);
        QVERIFY(runner.isRunning(path));
        runner.run(path);
        QVERIFY(!runner.isRunning(QStringLiteral("other.lua")));
        QTRY_VERIFY(!runner.isRunning(path));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 1);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).first().rawQuery,
                 QStringLiteral("name=games/farm.lua"));
        QCOMPARE(changes.size(), 2);
        QCOMPARE(changes.at(0), QVariantList({path, true}));
        QCOMPARE(changes.at(1), QVariantList({path, false}));
        QCOMPARE(m_fixture.alertCount(), 0);
        // Once it has ended, the file runs again.
        runner.run(path);
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 2);
    }

    void aRefusedRunSaysSoOnTheScreen()
    {
        m_fixture.engine->setResponder(
            [](const TPRecordedRequest &) { return TPScriptedAnswer::withStatus(500); });
        PlainScreen screen;
        screen.setPresenter(m_fixture.presenter.get());
        TPFileRunner runner(&screen);
        runner.run(QStringLiteral("main.lua"));
        QTRY_VERIFY(!runner.isRunning(QStringLiteral("main.lua")));
        QCOMPARE(m_fixture.alertText(), TPL("alert_error") + u'|' + TPL("err_run_fail"));
    }
};

QTEST_MAIN(TestTPFileRunner)
#include "tst_tpfilerunner.moc"
