#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

// One entry of the system's interface list, as getifaddrs reports it.
struct TPInterfaceEntry
{
    QByteArray name; // e.g. "en0"
    bool hasAddress = false;
    int family = 0;     // AF_INET, AF_INET6, ...
    QByteArray address; // the raw address bytes (struct in_addr for AF_INET)
};

// The engine's port, shown with the device address and in the Web IDE address.
inline constexpr auto TPEnginePort = "8090";
// The Wi-Fi interface: the only one whose address is shown.
inline constexpr auto TPWiFiInterfaceName = "en0";

// The first IPv4 address of the Wi-Fi interface in list order, in dotted-decimal form.
std::optional<QString> TPSelectDeviceIPv4(const QList<TPInterfaceEntry> &interfaces);

// The system's interface list via getifaddrs; none when getifaddrs fails.
std::optional<QList<TPInterfaceEntry>> TPSystemInterfaces();

// Where the interface list comes from; tests install a fixed list. An empty function
// restores the system's list.
using TPInterfaceSource = std::function<std::optional<QList<TPInterfaceEntry>>()>;
void TPSetInterfaceSource(TPInterfaceSource source);

// The device's Wi-Fi IPv4 address, looked up anew on every call.
std::optional<QString> TPDeviceIPv4();

// The address-and-port text the settings screen shows and copies: "<address>:8090",
// or the "na" text when there is no Wi-Fi address.
QString TPDeviceIPPortString();

// "<address>:8090"
QString TPDeviceAddressText(const QString &address);
// "http://<address>:8090"
QString TPWebIDEURLText(const QString &address);
