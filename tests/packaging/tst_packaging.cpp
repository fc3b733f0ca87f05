#include "app/tpappidentity.h"
#include "engine/tpengineapi.h"
#include "foundation/tpdeviceaddress.h"
#include "foundation/tpownerfile.h"
#include "tpiconset.h"

#include "tptestutil.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

namespace {

// The top-level dictionary of an XML property list: each key with its value, a boolean as
// "true"/"false", a string as itself, anything else as its element name. Nothing when the
// file is not a well-formed property list.
std::optional<QList<QPair<QString, QString>>> plistDictionary(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QXmlStreamReader xml(&file);
    QList<QPair<QString, QString>> entries;
    int depth = 0;
    QString key;
    bool sawPlist = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            ++depth;
            const QString name = xml.name().toString();
            if (depth == 1) {
                sawPlist = name == QLatin1String("plist");
            } else if (depth == 3 && name == QLatin1String("key")) {
                key = xml.readElementText();
                --depth;
            } else if (depth == 3) {
                QString value = name;
                if (name == QLatin1String("string")) {
                    value = xml.readElementText();
                    --depth;
                }
                entries.append({key, value});
            }
        } else if (xml.isEndElement()) {
            --depth;
        }
    }
    if (xml.hasError() || !sawPlist)
        return std::nullopt;
    return entries;
}

QString valueOf(const QList<QPair<QString, QString>> &entries, const QString &key)
{
    for (const auto &[name, value] : entries) {
        if (name == key)
            return value;
    }
    return {};
}

// The mean difference of two pictures of one size, per channel, 0 to 255.
double meanDifference(const QImage &a, const QImage &b)
{
    const QImage left = a.convertToFormat(QImage::Format_RGB32);
    const QImage right = b.convertToFormat(QImage::Format_RGB32);
    qint64 total = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            const QRgb p = left.pixel(x, y);
            const QRgb q = right.pixel(x, y);
            total +=
                qAbs(qRed(p) - qRed(q)) + qAbs(qGreen(p) - qGreen(q)) + qAbs(qBlue(p) - qBlue(q));
        }
    }
    return double(total) / (3.0 * left.width() * left.height());
}

const QString kPackaging = QStringLiteral(TP_SOURCE_DIR "/packaging/ios");

} // namespace

// What the phone build is made of, checked on the desktop: the entitlements, the filled
// Info.plist, the app icon set, the settings domain and the phone's defaults.
class TestPackaging : public QObject
{
    Q_OBJECT

private slots:
    void entitlementsHoldExactlyTheFourKeysEachTrue()
    {
        const auto entries =
            plistDictionary(kPackaging + QStringLiteral("/TPCompanion.entitlements"));
        QVERIFY(entries);
        const QList<QPair<QString, QString>> expected = {
            {QStringLiteral("com.apple.private.security.no-sandbox"), QStringLiteral("true")},
            {QStringLiteral("com.apple.private.security.storage.AppBundles"),
             QStringLiteral("true")},
            {QStringLiteral("com.apple.private.security.storage.AppDataContainers"),
             QStringLiteral("true")},
            {QStringLiteral("platform-application"), QStringLiteral("true")}};
        QCOMPARE(*entries, expected);
    }

    void filledInfoPlistCarriesTheBundleIdentifierAndVersion()
    {
        QFile filled(QStringLiteral(TP_FILLED_INFO_PLIST));
        QVERIFY(filled.open(QIODevice::ReadOnly));
        QVERIFY(!filled.readAll().contains("${"));
        const auto entries = plistDictionary(filled.fileName());
        QVERIFY(entries);
        QCOMPARE(valueOf(*entries, QStringLiteral("CFBundleIdentifier")),
                 QStringLiteral("com.tpcompanion.TPCompanion"));
        QCOMPARE(valueOf(*entries, QStringLiteral("CFBundleIdentifier")),
                 QStringLiteral(TP_BUNDLE_IDENTIFIER));
        QCOMPARE(valueOf(*entries, QStringLiteral("CFBundleShortVersionString")),
                 QStringLiteral(TP_PROJECT_VERSION));
        QCOMPARE(valueOf(*entries, QStringLiteral("CFBundleExecutable")),
                 QStringLiteral("TPCompanion"));
        QCOMPARE(valueOf(*entries, QStringLiteral("CFBundleDisplayName")),
                 QStringLiteral("TP Companion"));
        QCOMPARE(valueOf(*entries, QStringLiteral("UILaunchScreen")), QStringLiteral("dict"));
        QCOMPARE(valueOf(*entries, QStringLiteral("UISupportedInterfaceOrientations")),
                 QStringLiteral("array"));
    }

    void appIconPicturesAreRenderedFromTheVectorIcon()
    {
        QTemporaryDir rendered;
        QString error;
        QVERIFY2(
            TPWriteAppIconSet(kPackaging + QStringLiteral("/AppIcon.svg"), rendered.path(), &error),
            qPrintable(error));
        const QString committed =
            kPackaging + QStringLiteral("/Assets.xcassets/AppIcon.appiconset");
        QFile contents(committed + QStringLiteral("/Contents.json"));
        QFile fresh(rendered.filePath(QStringLiteral("Contents.json")));
        QVERIFY(contents.open(QIODevice::ReadOnly) && fresh.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(contents.readAll()),
                 QJsonDocument::fromJson(fresh.readAll()));
        for (const TPIconSlot &slot : TPAppIconSlots()) {
            const QImage kept(committed + u'/' + slot.fileName());
            const QImage made(rendered.filePath(slot.fileName()));
            QCOMPARE(kept.size(), QSize(slot.pixels, slot.pixels));
            QCOMPARE(made.size(), kept.size());
            // Renderers of other Qt versions may differ in a few edge pixels.
            QVERIFY2(meanDifference(kept, made) < 2.0, qPrintable(slot.fileName()));
        }
    }

    void settingsDomainOnThePhoneIsTheBundleIdentifier()
    {
        TPApplyAppIdentity();
        QCOMPARE(TPUserDefaultsDomain(), QStringLiteral(TP_BUNDLE_IDENTIFIER));
        QCOMPARE(QCoreApplication::organizationName(), QStringLiteral("TPCompanion"));
    }

    // With no seam set: the rootless owner-file paths, Wi-Fi on "en0", the engine on loopback.
    void phoneDefaultsAreTheDescribedOnes()
    {
        QCOMPARE(TPOwnerFilePrimaryPath(), QStringLiteral("/var/jb/var/tmp/tapper_owner.txt"));
        QCOMPARE(TPOwnerFileLocations().appGroupFolder,
                 QStringLiteral("/var/mobile/Containers/Shared/AppGroup"));
        QCOMPARE(QLatin1String(TPWiFiInterfaceName), QLatin1String("en0"));
        QCOMPARE(TPSelectDeviceIPv4({TPIPv4Interface("pdp_ip0", "10.0.0.5"),
                                     TPIPv4Interface("en0", "192.168.1.23"),
                                     TPIPv4Interface("en1", "192.168.2.9")}),
                 std::optional<QString>(QStringLiteral("192.168.1.23")));
        QCOMPARE(TPEngineAPI::baseAddress(), QStringLiteral("http://127.0.0.1:8090"));
        QCOMPARE(QLatin1String(TPEngineAPI::BaseAddress), QLatin1String("http://127.0.0.1:8090"));
    }
};

QTEST_MAIN(TestPackaging)
#include "tst_packaging.moc"
