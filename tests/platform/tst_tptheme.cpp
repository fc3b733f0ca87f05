#include "platform/tptheme.h"
#include "settings/tpswatchcell.h"

#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QMetaProperty>
#include <QPalette>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

namespace {

QPalette paletteWithWindow(const QColor &window)
{
    QPalette palette = QGuiApplication::palette();
    palette.setColor(QPalette::Window, window);
    return palette;
}

} // namespace

double contrast(const QColor &a, const QColor &b)
{
    return TPTheme::contrast(a, b);
}

// `colour` drawn over the opaque `background`.
QColor over(const QColor &colour, const QColor &background)
{
    const auto mix = [&](double top, double bottom) {
        return top * colour.alphaF() + bottom * (1 - colour.alphaF());
    };
    return QColor::fromRgbF(float(mix(colour.redF(), background.redF())),
                            float(mix(colour.greenF(), background.greenF())),
                            float(mix(colour.blueF(), background.blueF())));
}

class TestTPTheme : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QGuiApplication::setPalette(paletteWithWindow(QColor(0xEF, 0xEF, 0xEF))); }

    void followsTheSystemsLightOrDarkPalette()
    {
        TPTheme *theme = TPTheme::shared();
        QGuiApplication::setPalette(paletteWithWindow(QColor(0xEF, 0xEF, 0xEF)));
        QVERIFY(!theme->isDark());
        QCOMPARE(theme->label(), QColor(QStringLiteral("#000000")));
        QSignalSpy changed(theme, &TPTheme::paletteChanged);

        QGuiApplication::setPalette(paletteWithWindow(QColor(0x1C, 0x1C, 0x1E)));
        QTRY_VERIFY(theme->isDark());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(theme->label(), QColor(QStringLiteral("#FFFFFF")));
        QCOMPARE(theme->background(), QColor(QStringLiteral("#000000")));

        QGuiApplication::setPalette(paletteWithWindow(QColor(0xFF, 0xFF, 0xFF)));
        QTRY_VERIFY(!theme->isDark());
        QCOMPARE(changed.size(), 2);
        QCOMPARE(theme->background(), QColor(QStringLiteral("#FFFFFF")));
    }

    // A forced appearance holds whatever the platform's palette says, until it is given back
    // to the platform.
    void aForcedAppearanceHoldsUntilGivenBackToThePlatform()
    {
        TPTheme *theme = TPTheme::shared();
        QCOMPARE(TPTheme::appearanceNamed(QStringLiteral("dark")), TPTheme::Appearance::Dark);
        QCOMPARE(TPTheme::appearanceNamed(QStringLiteral("light")), TPTheme::Appearance::Light);
        QCOMPARE(TPTheme::appearanceNamed(QStringLiteral("auto")),
                 TPTheme::Appearance::FollowPlatform);
        QCOMPARE(TPTheme::appearanceNamed(QStringLiteral("Dark")), std::nullopt);
        theme->setAppearance(TPTheme::Appearance::Dark);
        QVERIFY(theme->isDark());
        QCOMPARE(theme->background(), TPTheme::darkPalette().background);
        QGuiApplication::setPalette(paletteWithWindow(QColor(0xF0, 0xF0, 0xF0)));
        QVERIFY(theme->isDark());
        theme->setAppearance(TPTheme::Appearance::Light);
        QGuiApplication::setPalette(paletteWithWindow(QColor(0x20, 0x20, 0x20)));
        QVERIFY(!theme->isDark());
        theme->setAppearance(TPTheme::Appearance::FollowPlatform);
        QVERIFY(theme->isDark());
        QGuiApplication::setPalette(paletteWithWindow(QColor(0xF0, 0xF0, 0xF0)));
        QVERIFY(!theme->isDark());
    }

    // A slider's filled part stands out from its empty part, and the empty part from the
    // background, in both appearances (3:1 for the fill, as for any control's state).
    void aSlidersPartsContrastInBothPalettes()
    {
        for (const TPTheme::Palette *palette :
             {&TPTheme::lightPalette(), &TPTheme::darkPalette()}) {
            QVERIFY2(contrast(palette->tint, palette->switchOff) >= 3.0,
                     qPrintable(QString::number(contrast(palette->tint, palette->switchOff))));
            QVERIFY2(contrast(palette->tint, palette->groupedCell) >= 3.0,
                     qPrintable(QString::number(contrast(palette->tint, palette->groupedCell))));
            QVERIFY(contrast(palette->switchOff, palette->groupedCell) >= 1.1);
        }
    }

    void everyColourIsValidInBothPalettes()
    {
        for (const QColor &window : {QColor(0xEF, 0xEF, 0xEF), QColor(0x1C, 0x1C, 0x1E)}) {
            QGuiApplication::setPalette(paletteWithWindow(window));
            TPTheme *theme = TPTheme::shared();
            QTRY_COMPARE(theme->isDark(), window.lightness() < 128);
            const QMetaObject &meta = TPTheme::staticMetaObject;
            for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
                const QMetaProperty property = meta.property(i);
                if (property.metaType() == QMetaType::fromType<QColor>())
                    QVERIFY2(property.read(theme).value<QColor>().isValid(), property.name());
            }
            const TPTheme::SyntaxColors &syntax = theme->syntaxColors();
            for (const QColor &colour : {syntax.keyword, syntax.string, syntax.comment,
                                         syntax.number, syntax.functionName})
                QVERIFY(colour.isValid());
        }
        QVERIFY(TPTheme::lightPalette().label != TPTheme::darkPalette().label);
    }

    void swatchBordersFollowTheAppearance()
    {
        TPSwatchCell cell;
        cell.selectRGB(0x007AFF);
        QSignalSpy changed(&cell, &TPSwatchCell::buttonsChanged);
        QGuiApplication::setPalette(paletteWithWindow(QColor(0x1C, 0x1C, 0x1E)));
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(cell.buttonStates().at(4).borderColor, TPTheme::darkPalette().label);
        QCOMPARE(cell.buttonStates().at(0).borderColor, TPTheme::darkPalette().separator);
    }

    // A swatch stands out from its cell in both appearances: by its fill, or else by the
    // ring around it (black in the dark, white in the light). Its border stays the separator.
    void everySwatchCanBeSeenInBothPalettes()
    {
        for (const QColor window : {QColor(0xEF, 0xEF, 0xEF), QColor(0x1C, 0x1C, 0x1E)}) {
            QGuiApplication::setPalette(paletteWithWindow(window));
            QTRY_COMPARE(TPTheme::shared()->isDark(), window.lightness() < 128);
            const QColor cell = TPTheme::shared()->groupedCell();
            TPSwatchCell swatches;
            const QVariantList shown = swatches.buttons();
            for (const QVariant &entry : shown) {
                const QVariantMap swatch = entry.toMap();
                const QColor fill = swatch.value(QStringLiteral("color")).value<QColor>();
                const QColor ring = swatch.value(QStringLiteral("outlineColor")).value<QColor>();
                QCOMPARE(swatch.value(QStringLiteral("borderColor")).value<QColor>(),
                         TPTheme::shared()->separator());
                const double edge =
                    std::max(contrast(fill, cell), contrast(over(ring, cell), cell));
                QVERIFY2(
                    edge >= 3.0,
                    qPrintable(
                        QStringLiteral("%1 on %2: %3").arg(fill.name(), cell.name()).arg(edge)));
            }
        }
    }

    // Every colour a view shows comes from the theme, so that both appearances cover it.
    void noViewNamesAColourOfItsOwn()
    {
        static const QRegularExpression literal(
            QStringLiteral(R"re("#[0-9A-Fa-f]{3,8}"|"(white|black|red|gray|grey)"|Qt\.rgba)re"));
        int files = 0;
        QDirIterator it(QStringLiteral(":/qt-project.org/imports/TPCompanion"),
                        {QStringLiteral("*.qml")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            ++files;
            const QString text = QString::fromUtf8(file.readAll());
            const QRegularExpressionMatch match = literal.match(text);
            QVERIFY2(!match.hasMatch(),
                     qPrintable(file.fileName() + QStringLiteral(": ") + match.captured()));
        }
        QVERIFY(files > 10);
    }
};

QTEST_MAIN(TestTPTheme)
#include "tst_tptheme.moc"
