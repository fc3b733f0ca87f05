#include "foundation/tpdeviceaddress.h"
#include "tptestutil.h"

#include <QSettings>
#include <QStandardPaths>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace {

TPInterfaceEntry ipv6(const char *name)
{
    return {name, true, AF_INET6, QByteArray(16, '\x01')};
}

} // namespace

class TestTPDeviceAddress : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tpdeviceaddress"));
        QSettings().clear();
    }
    void cleanup() { TPSetInterfaceSource({}); }

    void wifiAddressIsChosenOverLoopbackAndCellular()
    {
        const QList<TPInterfaceEntry> list = {TPIPv4Interface("lo0", "127.0.0.1"),
                                              TPIPv4Interface("pdp_ip0", "10.0.0.5"),
                                              TPIPv4Interface("en0", "192.168.1.23")};
        QCOMPARE(orNone(TPSelectDeviceIPv4(list)), QStringLiteral("192.168.1.23"));
        QCOMPARE(TPDeviceAddressText(QStringLiteral("192.168.1.23")),
                 QStringLiteral("192.168.1.23:8090"));
        TPSetInterfaceSource([list] { return list; });
        QCOMPARE(orNone(TPDeviceIPv4()), QStringLiteral("192.168.1.23"));
        QCOMPARE(TPDeviceIPPortString(), QStringLiteral("192.168.1.23:8090"));
    }

    void noWifiInterfaceMeansNoAddress()
    {
        const QList<TPInterfaceEntry> list = {TPIPv4Interface("lo0", "127.0.0.1"),
                                              TPIPv4Interface("pdp_ip0", "10.0.0.5")};
        QCOMPARE(orNone(TPSelectDeviceIPv4(list)), TPNone);
        TPSetInterfaceSource([list] { return list; });
        QCOMPARE(orNone(TPDeviceIPv4()), TPNone);
        QCOMPARE(TPDeviceIPPortString(), QStringLiteral("N/A"));
    }

    void ipv6EntryBeforeIpv4IsSkipped()
    {
        QCOMPARE(orNone(TPSelectDeviceIPv4({ipv6("en0"), TPIPv4Interface("en0", "192.168.1.23")})),
                 QStringLiteral("192.168.1.23"));
    }

    void firstOfTwoIpv4EntriesWins()
    {
        QCOMPARE(orNone(TPSelectDeviceIPv4({TPIPv4Interface("en0", "192.168.1.23"),
                                            TPIPv4Interface("en0", "192.168.1.99")})),
                 QStringLiteral("192.168.1.23"));
    }

    void onlyTheExactWifiNameQualifies()
    {
        QCOMPARE(orNone(TPSelectDeviceIPv4({TPIPv4Interface("en1", "10.1.1.1"),
                                            TPIPv4Interface("en0:1", "10.1.1.2"),
                                            TPIPv4Interface("EN0", "10.1.1.3")})),
                 TPNone);
    }

    void entryWithoutAddressOrUnconvertibleAddressIsSkipped()
    {
        TPInterfaceEntry bare{"en0", false, AF_INET, {}};
        TPInterfaceEntry broken{"en0", true, AF_INET, QByteArray("\x01", 1)};
        QCOMPARE(orNone(TPSelectDeviceIPv4({bare, broken, TPIPv4Interface("en0", "172.16.0.9")})),
                 QStringLiteral("172.16.0.9"));
    }

    void failedInterfaceListingMeansNoAddress()
    {
        TPSetInterfaceSource([] { return std::optional<QList<TPInterfaceEntry>>(); });
        QCOMPARE(orNone(TPDeviceIPv4()), TPNone);
    }

    void webIdeUrlIsHttpAddressAndPort()
    {
        QCOMPARE(TPWebIDEURLText(QStringLiteral("192.168.1.23")),
                 QStringLiteral("http://192.168.1.23:8090"));
    }

    void longestAddressFitsTheBuffer()
    {
        QCOMPARE(orNone(TPSelectDeviceIPv4({TPIPv4Interface("en0", "255.255.255.255")})),
                 QStringLiteral("255.255.255.255"));
    }

    // The system's own listing reads, whatever interfaces this machine has: each entry is
    // named, and an IPv4 one carries a 4-byte address.
    void systemListingIsReadWhateverTheMachineHas()
    {
        const auto interfaces = TPSystemInterfaces();
        QVERIFY(interfaces.has_value());
        for (const TPInterfaceEntry &entry : *interfaces) {
            QVERIFY(!entry.name.isEmpty());
            if (entry.hasAddress && entry.family == AF_INET)
                QCOMPARE(entry.address.size(), 4);
        }
    }
};

QTEST_GUILESS_MAIN(TestTPDeviceAddress)
#include "tst_tpdeviceaddress.moc"
