#include "tpiconoutline.h"

#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kSources = QStringLiteral(TP_SOURCE_DIR "/src");

// Every icon a module ships (src/*/icons/NAME.svg) with the drawing it is made from
// (drawn/NAME.svg beside it), whether that drawing exists or not.
QList<QPair<QString, QString>> shippedIcons()
{
    QList<QPair<QString, QString>> icons;
    QDirIterator files(kSources, {QStringLiteral("*.svg")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QFileInfo shipped(files.next());
        if (shipped.dir().dirName() != QLatin1String("icons"))
            continue;
        icons.append({shipped.filePath(),
                      shipped.dir().filePath(QStringLiteral("drawn/") + shipped.fileName())});
    }
    return icons;
}

QImage rendered(QSvgRenderer &renderer, int pixels)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

// The largest difference of coverage (0 to 255) between two pictures of the same size.
int largestCoverageDifference(const QImage &a, const QImage &b)
{
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            largest = std::max(largest, std::abs(qAlpha(a.pixel(x, y)) - qAlpha(b.pixel(x, y))));
    }
    return largest;
}

} // namespace

class TestTPIconOutline : public QObject
{
    Q_OBJECT
private slots:
    void everyModuleIconHasItsDrawing()
    {
        const QList<QPair<QString, QString>> icons = shippedIcons();
        QCOMPARE(icons.size(), 4);
        for (const auto &[shipped, drawn] : icons)
            QVERIFY2(QFileInfo::exists(drawn), qPrintable(drawn));
    }

    // At the tab bar's size and at ten times it, edges may differ by a shade of antialiasing,
    // never by a line or a gap: a drawing changed without running make-outline-icons.sh fails.
    void shippedIconDrawsWhatItsDrawingDraws()
    {
        for (const auto &[shipped, drawn] : shippedIcons()) {
            QSvgRenderer outline(shipped);
            QSvgRenderer drawing(drawn);
            QVERIFY2(outline.isValid() && drawing.isValid(), qPrintable(shipped));
            QCOMPARE(outline.viewBoxF(), drawing.viewBoxF());
            for (const int pixels : {28, 56, 84, 280}) {
                const int difference =
                    largestCoverageDifference(rendered(outline, pixels), rendered(drawing, pixels));
                QVERIFY2(difference <= 12, qPrintable(QStringLiteral("%1 at %2 px: %3")
                                                          .arg(shipped)
                                                          .arg(pixels)
                                                          .arg(difference)));
            }
        }
    }

    // What the outline is for: nothing in it is stroked, and its paths are lines and cubic
    // curves only, so drawing it needs no arcs and no round joins.
    void shippedIconIsFilledLinesAndCurvesOnly()
    {
        static const QRegularExpression nonOutlineCommand(QStringLiteral("[^MLCZ0-9 .\\-]"));
        static const QRegularExpression pathData(QStringLiteral(" d=\"([^\"]*)\""));
        for (const auto &[shipped, drawn] : shippedIcons()) {
            QFile file(shipped);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(file.readAll());
            QVERIFY2(!text.contains(QLatin1String("stroke")), qPrintable(shipped));
            QVERIFY2(!text.contains(QLatin1String("<circle")), qPrintable(shipped));
            QRegularExpressionMatchIterator paths = pathData.globalMatch(text);
            QVERIFY(paths.hasNext());
            while (paths.hasNext()) {
                const QString data = paths.next().captured(1);
                QVERIFY2(!data.contains(nonOutlineCommand), qPrintable(shipped + u' ' + data));
            }
        }
    }

    void outlineOfStrokedDrawingCoversTheStroke()
    {
        QTemporaryDir folder;
        const QString drawn = folder.filePath(QStringLiteral("line.svg"));
        QFile file(drawn);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<svg xmlns='http://www.w3.org/2000/svg' width='20' height='20' "
                   "viewBox='0 0 20 20'><path d='M2 10h16' stroke='#000' stroke-width='4' "
                   "fill='none'/></svg>");
        file.close();
        QString error;
        const std::optional<QByteArray> outline =
            TPOutlineIcon(drawn, QStringLiteral("drawn/line.svg"), &error);
        QVERIFY2(outline, qPrintable(error));
        QVERIFY(outline->contains("drawn/line.svg"));
        QSvgRenderer renderer(*outline);
        QVERIFY(renderer.isValid());
        const QImage image = rendered(renderer, 20);
        // A butt-capped line 4 units thick: covered from x 2 to 18 and y 8 to 12.
        QCOMPARE(qAlpha(image.pixel(10, 9)), 255);
        QCOMPARE(qAlpha(image.pixel(3, 11)), 255);
        QCOMPARE(qAlpha(image.pixel(10, 5)), 0);
        QCOMPARE(qAlpha(image.pixel(0, 10)), 0);
        QCOMPARE(qAlpha(image.pixel(19, 10)), 0);
    }

    void unreadableDrawingIsAnErrorNotAnOutline()
    {
        QTemporaryDir folder;
        const QString broken = folder.filePath(QStringLiteral("broken.svg"));
        QFile file(broken);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<svg");
        file.close();
        for (const QString &path : {broken, folder.filePath(QStringLiteral("missing.svg"))}) {
            QString error;
            QVERIFY(!TPOutlineIcon(path, QStringLiteral("drawn/x.svg"), &error));
            QVERIFY2(error.contains(path), qPrintable(error));
        }
    }
};

QTEST_MAIN(TestTPIconOutline)
#include "tst_tpiconoutline.moc"
