#include "editor/tptextsize.h"

#include <QCoreApplication>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

// The editor's text size: its steps, its keys and pinch, and where it is kept.
class TestTPTextSize : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tptextsize"));
    }
    void init() { QSettings().clear(); }

    void theDefaultIsTheDescribed14PointsAmongEightSteps()
    {
        TPTextSize size;
        QCOMPARE(size.step(), 3);
        QCOMPARE(size.points(), 14.0);
        QCOMPARE(int(TPTextSize::Points.size()), 8);
        QVERIFY(std::is_sorted(TPTextSize::Points.begin(), TPTextSize::Points.end()));
    }

    void largerAndSmallerStepAndStopAtTheEnds()
    {
        TPTextSize size;
        QSignalSpy changed(&size, &TPTextSize::changed);
        size.larger();
        QCOMPARE(size.points(), 16.0);
        for (int i = 0; i < 10; ++i)
            size.larger();
        QCOMPARE(size.step(), 7);
        QCOMPARE(size.points(), 24.0);
        for (int i = 0; i < 10; ++i)
            size.smaller();
        QCOMPARE(size.step(), 0);
        QCOMPARE(size.points(), 10.0);
        QCOMPARE(changed.size(), 11);
        size.reset();
        QCOMPARE(size.points(), 14.0);
    }

    void theSizeIsRememberedUnderTheAppsOwnKey()
    {
        {
            TPTextSize size;
            size.larger();
            size.larger();
        }
        QCOMPARE(QSettings().value(QLatin1String(TPTextSize::SettingsKey)).toInt(), 5);
        QVERIFY(
            QString::fromLatin1(TPTextSize::SettingsKey).startsWith(QLatin1String("tp_editor")));
        TPTextSize again;
        QCOMPARE(again.step(), 5);
        QCOMPARE(TPTextSize::storedStep(), 5);
        // A stored value out of range is no size at all.
        QSettings().setValue(QLatin1String(TPTextSize::SettingsKey), 42);
        QCOMPARE(TPTextSize().step(), TPTextSize::DefaultStep);
    }

    void aPinchStepsFromWhereItBeganByHowFarItSpreads()
    {
        TPTextSize size;
        size.beginPinch();
        size.pinch(1.1);
        QCOMPARE(size.step(), 3);
        size.pinch(1.2);
        QCOMPARE(size.step(), 4);
        size.pinch(1.2 * 1.2);
        QCOMPARE(size.step(), 5);
        size.pinch(1 / 1.2);
        QCOMPARE(size.step(), 2);
        size.pinch(0);
        QCOMPARE(size.step(), 2);
        size.beginPinch();
        size.pinch(1.2);
        QCOMPARE(size.step(), 3);
    }
};

QTEST_GUILESS_MAIN(TestTPTextSize)
#include "tst_tptextsize.moc"
