// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/SnmpListener.h"

#include <QHostAddress>

#include <algorithm>
#include <map>
#include <utility>

#include "agent/core/Descriptors.h"
#include "agent/core/Log.h"
#include "agent/netsnmp/ManagerSocket.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent::snmpListener {

namespace {

using Call = int (*)(netsnmp_transport*);

struct Calls
{
    Call accept;
    Call close;
};

// Net-SNMP's hooks take no argument of ours, and its state is global as well.
std::map<const oid*, Calls> callsOfDomain;
std::map<int, QHostAddress> clients; // by descriptor
bool isRefusalLogged = false;

/// Empty if the connection may stay.
QString refusalOf(int descriptor, const QHostAddress& address)
{
    const auto ofAddress = std::count_if(clients.begin(), clients.end(),
                                         [&](const auto& client) { return client.second == address; });
    if (ofAddress >= maxPerAddress)
        return QStringLiteral("it has %1 already").arg(maxPerAddress);
    if (clients.size() >= maxConnections)
        return QStringLiteral("all managers together have %1 already").arg(maxConnections);
    if (descriptors::isReserved(descriptor))
        return QStringLiteral("the agent needs the last descriptors itself; raise its limit of open files");
    return {};
}

int acceptWithinLimits(netsnmp_transport* listener)
{
    const int descriptor = callsOfDomain.at(listener->domain).accept(listener);
    if (descriptor < 0)
        return descriptor;
    const QHostAddress address = managerSocket::peerOf(descriptor);
    const QString refusal = refusalOf(descriptor, address);
    if (refusal.isEmpty()) {
        clients[descriptor] = address;
        return descriptor;
    }
    managerSocket::close(descriptor);
    if (!std::exchange(isRefusalLogged, true))
        log::warning(QStringLiteral("a TCP connection of the manager at %1 is closed: %2. Further ones are "
                                    "not logged until a manager disconnects")
                         .arg(address.toString(), refusal));
    return -1;
}

int closeAndForget(netsnmp_transport* transport)
{
    if (clients.erase(transport->sock) > 0)
        isRefusalLogged = false;
    return callsOfDomain.at(transport->domain).close(transport);
}

} // namespace

bool listen(const QString& address)
{
    netsnmp_transport* transport =
        netsnmp_transport_open_server("snmp", address.trimmed().toLocal8Bit().constData());
    if (!transport)
        return false;
    if (!managerSocket::prepare(*transport)) {
        transport->f_close(transport);
        netsnmp_transport_free(transport);
        return false;
    }
    if (transport->f_accept) { // a connection inherits the hooks
        callsOfDomain.insert({transport->domain, {transport->f_accept, transport->f_close}});
        transport->f_accept = &acceptWithinLimits;
        transport->f_close = &closeAndForget;
    }
    return netsnmp_register_agent_nsap(transport) > 0;
}

} // namespace agent::snmpListener
