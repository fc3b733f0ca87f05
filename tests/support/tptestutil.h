#pragma once

#include "engine/tpengineapi.h"
#include "foundation/tpdeviceaddress.h"
#include "platform/tptitledrowsmodel.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QMetaEnum>
#include <QString>
#include <QTcpServer>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <optional>

// Optional texts as one comparable, printable text: QCOMPARE then shows both sides.
inline const QString TPNone = QStringLiteral("<none>");

inline QString orNone(const std::optional<QString> &text)
{
    return text ? *text : TPNone;
}

// A row mark by its name in lower case ("added", "dimmed"), and a plain row's as "": the
// tests read the rows as texts.
inline QString TPMarkName(TPTitledRowsModel::Mark mark)
{
    if (mark == TPTitledRowsModel::Plain)
        return {};
    return QString::fromLatin1(QMetaEnum::fromType<TPTitledRowsModel::Mark>().valueToKey(mark))
        .toLower();
}

// A loopback port nothing listens on: taken from the system, then given back.
inline quint16 TPClosedLoopbackPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

// Sends the app's engine requests to 127.0.0.1:<port>.
inline void TPPointEngineAPIAt(quint16 port)
{
    TPEngineAPI::setBaseAddressForTesting(QStringLiteral("http://127.0.0.1:%1").arg(port));
}

// From now on nothing listens where the app sends its engine requests.
inline void TPPointEngineAPIAtNothing()
{
    TPPointEngineAPIAt(TPClosedLoopbackPort());
}

// The file's bytes, or "<missing>" when it cannot be read.
inline QByteArray TPReadFileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Writes the file plainly (creating its folder), as something outside the app would.
inline bool TPWriteFileBytes(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

// An interface-list entry carrying an IPv4 address.
inline TPInterfaceEntry TPIPv4Interface(const char *name, const char *dotted)
{
    in_addr raw{};
    inet_pton(AF_INET, dotted, &raw);
    return {name, true, AF_INET, QByteArray(reinterpret_cast<const char *>(&raw), sizeof raw)};
}
