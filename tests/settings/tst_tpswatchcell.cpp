#include "platform/tptheme.h"
#include "settings/tpswatchcell.h"

#include <QTest>

class TestTPSwatchCell : public QObject
{
    Q_OBJECT

    static int selectedCount(const TPSwatchCell &cell)
    {
        int count = 0;
        for (const TPSwatchCell::Button &button : cell.buttonStates())
            count += button.borderWidth == 3 ? 1 : 0;
        return count;
    }

private slots:
    void colourFromRgbSplitsTheChannels()
    {
        const QColor blue = TPColorFromRGB(0x007AFF);
        QCOMPARE(blue.redF(), 0.0f);
        QVERIFY(qAbs(blue.greenF() - 122.0f / 255.0f) < 1e-6f);
        QCOMPARE(blue.blueF(), 1.0f);
        QCOMPARE(blue.alphaF(), 1.0f);
    }

    void colourIgnoresBitsAboveTheLowest24()
    {
        QCOMPARE(TPColorFromRGB(0xAB007AFF), TPColorFromRGB(0x007AFF));
        QCOMPARE(TPColorFromRGB(0xFF000000), TPColorFromRGB(0x000000));
    }

    void paletteHasTheEightColoursInOrder()
    {
        const TPSwatchCell cell;
        QCOMPARE(cell.presetRGBs(), QList<quint32>({0xFF3B30, 0xFF9500, 0xFFCC00, 0x34C759,
                                                    0x007AFF, 0xAF52DE, 0xFFFFFF, 0x000000}));
        QCOMPARE(cell.buttonStates().size(), 8);
        QCOMPARE(cell.buttonStates().at(3).color, TPColorFromRGB(0x34C759));
        QCOMPARE(selectedCount(cell), 0);
    }

    void selectingAColourOutsideThePaletteSelectsNothing()
    {
        TPSwatchCell cell;
        cell.selectRGB(0xFF3B30);
        cell.selectRGB(0x123456);
        for (const TPSwatchCell::Button &button : cell.buttonStates()) {
            QCOMPARE(button.borderWidth, 1);
            QCOMPARE(button.borderColor, TPSwatchCell::separatorColor());
        }
    }

    void selectingReportsNothing()
    {
        TPSwatchCell cell;
        int picks = 0;
        cell.setOnPick([&picks](quint32) { ++picks; });
        cell.selectRGB(0xFFFFFF);
        QCOMPARE(picks, 0);
        QCOMPARE(selectedCount(cell), 1);
    }

    void tappingWhiteSelectsItAloneAndReportsIt()
    {
        TPSwatchCell cell;
        cell.selectRGB(0xFF3B30);
        QList<quint32> picked;
        cell.setOnPick([&picked](quint32 rgb) { picked.append(rgb); });
        cell.onSwatchTapped(6);
        QCOMPARE(picked, QList<quint32>({0xFFFFFF}));
        QCOMPARE(cell.buttonStates().at(6).borderWidth, 3);
        QCOMPARE(cell.buttonStates().at(6).borderColor, TPSwatchCell::labelColor());
        QCOMPARE(cell.buttonStates().at(0).borderWidth, 1);
        QCOMPARE(selectedCount(cell), 1);
        QCOMPARE(cell.buttons().at(6).toMap().value(QStringLiteral("borderWidth")).toInt(), 3);
    }

    // The selected swatch carries a check mark in black or white, whichever stands out from
    // its fill; the others carry none.
    void theSelectedSwatchCarriesACheckMarkThatStandsOut()
    {
        TPSwatchCell cell;
        for (int index = 0; index < 8; ++index) {
            cell.onSwatchTapped(index);
            const QVariantList buttons = cell.buttons();
            for (int other = 0; other < 8; ++other) {
                const QVariantMap button = buttons.at(other).toMap();
                QCOMPARE(button.value(QStringLiteral("selected")).toBool(), other == index);
            }
            const QVariantMap chosen = buttons.at(index).toMap();
            const QColor fill = chosen.value(QStringLiteral("color")).value<QColor>();
            const QColor check = chosen.value(QStringLiteral("checkColor")).value<QColor>();
            QVERIFY(check == QColor(Qt::black) || check == QColor(Qt::white));
            QVERIFY2(TPTheme::contrast(fill, check) >= 3.0,
                     qPrintable(fill.name() + u' ' + check.name()));
        }
        QCOMPARE(TPSwatchCell::checkColor(QColor(0xFF, 0xCC, 0x00)), QColor(Qt::black));
        QCOMPARE(TPSwatchCell::checkColor(QColor(Qt::black)), QColor(Qt::white));
    }

    void tappingWithoutHandlerStillSelects()
    {
        TPSwatchCell cell;
        cell.onSwatchTapped(7);
        QCOMPARE(cell.buttonStates().at(7).borderWidth, 3);
        cell.onSwatchTapped(8);
        QCOMPARE(selectedCount(cell), 1);
    }
};

QTEST_MAIN(TestTPSwatchCell)
#include "tst_tpswatchcell.moc"
