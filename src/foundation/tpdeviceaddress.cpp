#include "foundation/tpdeviceaddress.h"

#include "foundation/tplang.h"

#include <arpa/inet.h>
#include <cstring>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <mutex>

namespace {

struct SourceHolder
{
    std::mutex mutex;
    TPInterfaceSource source;
};

SourceHolder &sourceHolder()
{
    static SourceHolder holder;
    return holder;
}

std::optional<QString> ipv4Text(const QByteArray &address)
{
    if (address.size() != int(sizeof(in_addr)))
        return std::nullopt;
    in_addr raw{};
    std::memcpy(&raw, address.constData(), sizeof raw);
    char buffer[INET_ADDRSTRLEN] = {};
    if (!inet_ntop(AF_INET, &raw, buffer, sizeof buffer))
        return std::nullopt;
    return QString::fromLatin1(buffer);
}

} // namespace

std::optional<QString> TPSelectDeviceIPv4(const QList<TPInterfaceEntry> &interfaces)
{
    for (const TPInterfaceEntry &entry : interfaces) {
        if (!entry.hasAddress || entry.family != AF_INET || entry.name != TPWiFiInterfaceName)
            continue;
        // A failed conversion moves on to the next qualifying entry.
        if (auto text = ipv4Text(entry.address))
            return text;
    }
    return std::nullopt;
}

std::optional<QList<TPInterfaceEntry>> TPSystemInterfaces()
{
    ifaddrs *head = nullptr;
    if (getifaddrs(&head) != 0)
        return std::nullopt;
    QList<TPInterfaceEntry> entries;
    for (const ifaddrs *it = head; it; it = it->ifa_next) {
        TPInterfaceEntry entry;
        entry.name = QByteArray(it->ifa_name);
        entry.hasAddress = it->ifa_addr != nullptr;
        if (entry.hasAddress) {
            entry.family = it->ifa_addr->sa_family;
            if (entry.family == AF_INET) {
                const auto *v4 = reinterpret_cast<const sockaddr_in *>(it->ifa_addr);
                entry.address =
                    QByteArray(reinterpret_cast<const char *>(&v4->sin_addr), sizeof v4->sin_addr);
            }
        }
        entries.append(entry);
    }
    freeifaddrs(head);
    return entries;
}

void TPSetInterfaceSource(TPInterfaceSource source)
{
    SourceHolder &holder = sourceHolder();
    const std::lock_guard lock(holder.mutex);
    holder.source = std::move(source);
}

std::optional<QString> TPDeviceIPv4()
{
    TPInterfaceSource source;
    {
        SourceHolder &holder = sourceHolder();
        const std::lock_guard lock(holder.mutex);
        source = holder.source;
    }
    const auto interfaces = source ? source() : TPSystemInterfaces();
    return interfaces ? TPSelectDeviceIPv4(*interfaces) : std::nullopt;
}

QString TPDeviceAddressText(const QString &address)
{
    return QStringLiteral("%1:%2").arg(address, QLatin1String(TPEnginePort));
}

QString TPWebIDEURLText(const QString &address)
{
    return QStringLiteral("http://%1:%2").arg(address, QLatin1String(TPEnginePort));
}

QString TPDeviceIPPortString()
{
    const auto address = TPDeviceIPv4();
    return address ? TPDeviceAddressText(*address) : TPL(QStringLiteral("na"));
}
