#include "platform/tptextfaces.h"
#include "platform/tptheme.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QTest>

namespace {

// What a text of the app is drawn with, measured as a row's name is.
struct Measured
{
    QFont applicationFont;
    qreal advance;
    qreal height;

    bool operator==(const Measured &other) const
    {
        return applicationFont == other.applicationFont && advance == other.advance &&
               height == other.height;
    }
};

QFont bodyFont()
{
    QFont body;
    body.setPixelSize(TPTheme::shared()->bodySize());
    return body;
}

Measured measureABodyText()
{
    const QFontMetricsF metrics(bodyFont());
    return {QGuiApplication::font(), metrics.horizontalAdvance(QStringLiteral("harvest.lua")),
            metrics.height()};
}

} // namespace

class TestTPTextFaces : public QObject
{
    Q_OBJECT

private slots:
    // Loading only loads: every text measures as it did before.
    void loadingTheFacesChangesNoFontTheAppDrawsWith()
    {
        const Measured before = measureABodyText();
        QFont title = bodyFont();
        title.setWeight(QFont::DemiBold);
        TPLoadTextFaces({bodyFont(), title, QFont()}, QStringLiteral("📁📄 Kịch bản"));
        QVERIFY(measureABodyText() == before);
    }

    void anyTextIsASample_data()
    {
        QTest::addColumn<QString>("sample");
        QTest::newRow("empty") << QString();
        QTest::newRow("a lone surrogate") << QString(QChar(0xD800));
        QTest::newRow("a null character") << QString(QChar(0));
        QTest::newRow("a script few faces have") << QStringLiteral("𒀀𒀁");
        QTest::newRow("a long line") << QString(20000, QLatin1Char('x'));
    }

    void anyTextIsASample()
    {
        QFETCH(QString, sample);
        const Measured before = measureABodyText();
        TPLoadTextFaces({bodyFont()}, sample);
        QVERIFY(measureABodyText() == before);
    }

    void anEmptyFontListChangesNoFont()
    {
        const Measured before = measureABodyText();
        TPLoadTextFaces({}, QStringLiteral("📁"));
        QVERIFY(measureABodyText() == before);
    }
};

QTEST_MAIN(TestTPTextFaces)
#include "tst_tptextfaces.moc"
