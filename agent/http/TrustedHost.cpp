// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/http/TrustedHost.h"

#include <QHostAddress>
#include <QString>

namespace agent {

namespace {

/// The header without its port.
QByteArray hostIn(const QByteArray& header)
{
    if (header.startsWith('['))
        return header.left(header.indexOf(']') + 1);
    return header.mid(0, header.indexOf(':')); // all of it without a colon
}

bool isPort(const QByteArray& text)
{
    bool isNumber = false;
    text.mid(1).toUShort(&isNumber);
    return text.isEmpty() || (text.startsWith(':') && isNumber);
}

bool isAddress(const QByteArray& host)
{
    const bool isIPv6 = host.startsWith('[') && host.endsWith(']');
    const QHostAddress address(QString::fromLatin1(isIPv6 ? host.mid(1, host.size() - 2) : host));
    return address.protocol() == (isIPv6 ? QAbstractSocket::IPv6Protocol : QAbstractSocket::IPv4Protocol);
}

} // namespace

bool isTrustedHost(const QByteArray& header, const QByteArray& machineName)
{
    const QByteArray host = hostIn(header).toLower();
    if (host.isEmpty() || !isPort(header.mid(host.size())))
        return false;
    return isAddress(host) || host == "localhost" || host == machineName.toLower();
}

} // namespace agent
