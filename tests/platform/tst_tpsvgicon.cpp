#include "platform/tpsvgicon.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QQmlContext>
#include <QQmlEngine>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The test's icon: a filled square over the middle of a 26 by 26 view box.
const QString kSquare = QStringLiteral(":/icons/square.svg");

QImage drawn(TPSvgIcon &icon)
{
    QImage image(26, 26, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    icon.paint(&painter);
    return image;
}

} // namespace

class TestTPSvgIcon : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void aFileIsDrawnAtTheItemsSize()
    {
        const QString path = m_dir.filePath(QStringLiteral("square.svg"));
        QVERIFY(QFile::copy(kSquare, path));
        TPSvgIcon icon;
        icon.setSize(QSizeF(26, 26));
        QSignalSpy changed(&icon, &TPSvgIcon::sourceChanged);
        icon.setSource(QUrl::fromLocalFile(path));
        QCOMPARE(changed.size(), 1);
        QVERIFY(icon.isValid());
        const QImage image = drawn(icon);
        QCOMPARE(image.pixelColor(13, 13), QColor(0x00, 0x7a, 0xff));
        QCOMPARE(image.pixelColor(2, 2).alpha(), 0);
    }

    void aColourDrawsTheShapeInThatColourAlone()
    {
        TPSvgIcon icon;
        icon.setSize(QSizeF(26, 26));
        icon.setSource(QUrl(QStringLiteral("qrc") + kSquare));
        QSignalSpy changed(&icon, &TPSvgIcon::colorChanged);
        icon.setColor(QColor(0xff, 0x9f, 0x0a));
        icon.setColor(QColor(0xff, 0x9f, 0x0a));
        QCOMPARE(changed.size(), 1);
        const QImage image = drawn(icon);
        QCOMPARE(image.pixelColor(13, 13), QColor(0xff, 0x9f, 0x0a));
        QCOMPARE(image.pixelColor(2, 2).alpha(), 0);
    }

    void anUnreadableFileDrawsNothing()
    {
        TPSvgIcon icon;
        icon.setSize(QSizeF(26, 26));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot open file")));
        icon.setSource(QUrl::fromLocalFile(m_dir.filePath(QStringLiteral("missing.svg"))));
        QVERIFY(!icon.isValid());
        const QImage image = drawn(icon);
        QCOMPARE(image.pixelColor(13, 13).alpha(), 0);
    }

    void aResourceIsReadByItsQrcAddress()
    {
        TPSvgIcon icon;
        icon.setSource(QUrl(QStringLiteral("qrc") + kSquare));
        QVERIFY(icon.isValid());
    }

    void aRelativeSourceIsReadFromBesideItsView()
    {
        QQmlEngine engine;
        QQmlContext view(&engine);
        view.setBaseUrl(QUrl(QStringLiteral("qrc:/icons/View.qml")));
        TPSvgIcon icon;
        QQmlEngine::setContextForObject(&icon, &view);
        icon.setSource(QUrl(QStringLiteral("square.svg")));
        QVERIFY(icon.isValid());
    }

    void theSameSourceAgainChangesNothing()
    {
        TPSvgIcon icon;
        icon.setSource(QUrl(QStringLiteral("qrc") + kSquare));
        QSignalSpy changed(&icon, &TPSvgIcon::sourceChanged);
        icon.setSource(QUrl(QStringLiteral("qrc") + kSquare));
        QCOMPARE(changed.size(), 0);
    }
};

QTEST_MAIN(TestTPSvgIcon)
#include "tst_tpsvgicon.moc"
