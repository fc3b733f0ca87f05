#include "settings/tpslidercell.h"

#include <QTest>

class TestTPSliderCell : public QObject
{
    Q_OBJECT

private slots:
    void roundingTakesHalvesAwayFromZero()
    {
        QCOMPARE(TPSliderCell::roundedValue(2.5f), 3);
        QCOMPARE(TPSliderCell::roundedValue(2.4f), 2);
        QCOMPARE(TPSliderCell::roundedValue(-2.5f), -3);
    }

    void configuringShowsTheValueWithItsSuffix()
    {
        TPSliderCell cell;
        int reports = 0;
        cell.setOnChanged([&reports](qint64) { ++reports; });
        cell.configureWithTitle(QStringLiteral("Opacity"), 5, 100, 40, QStringLiteral("%"));
        QCOMPARE(cell.title(), QStringLiteral("Opacity"));
        QCOMPARE(cell.valueText(), QStringLiteral("40%"));
        QCOMPARE(cell.minimum(), 5.0f);
        QCOMPARE(cell.maximum(), 100.0f);
        QCOMPARE(cell.value(), 40.0f);
        cell.configureWithTitle(QStringLiteral("Size"), 5, 100, 40);
        QCOMPARE(cell.valueText(), QStringLiteral("40"));
        QCOMPARE(cell.suffix(), QString());
        QCOMPARE(reports, 0);
    }

    void draggingShowsTheRoundedValueAndReportsNothing()
    {
        TPSliderCell cell;
        QList<qint64> reports;
        cell.setOnChanged([&reports](qint64 value) { reports.append(value); });
        cell.configureWithTitle(QStringLiteral("Size"), 8, 120, 44);
        cell.onSliderDragging(57.5f);
        QCOMPARE(cell.valueText(), QStringLiteral("58"));
        QCOMPARE(cell.value(), 44.0f);
        QVERIFY(reports.isEmpty());
    }

    void releasingSnapsToTheWholeValueAndReportsItOnce()
    {
        TPSliderCell cell;
        QList<qint64> reports;
        cell.setOnChanged([&reports](qint64 value) { reports.append(value); });
        cell.configureWithTitle(QStringLiteral("Size"), 8, 120, 44, QStringLiteral("%"));
        cell.onSliderDragging(57.5f);
        cell.onSliderReleased(57.5f);
        QCOMPARE(cell.value(), 58.0f);
        QCOMPARE(cell.valueText(), QStringLiteral("58%"));
        QCOMPARE(reports, QList<qint64>({58}));
    }

    void storedValueOutsideTheRangeIsShownAsIs()
    {
        TPSliderCell cell;
        cell.configureWithTitle(QStringLiteral("Size"), 8, 120, 200);
        QCOMPARE(cell.valueText(), QStringLiteral("200"));
        QCOMPARE(cell.value(), 120.0f);
    }
};

QTEST_MAIN(TestTPSliderCell)
#include "tst_tpslidercell.moc"
