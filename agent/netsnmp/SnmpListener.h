// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_SNMPLISTENER_H
#define VIGIL_AGENT_NETSNMP_SNMPLISTENER_H

#include <QString>

/// Where managers reach a standalone agent.
///
/// Net-SNMP accepts any number of TCP connections and never closes an idle one. Once no descriptor is left,
/// it finds the next connection again and again. Here each address and all together have a limit, and the
/// agent's own descriptors stay free. A connection beyond a limit is closed at once, with one line in the
/// log.
namespace agent::snmpListener {

constexpr int maxPerAddress = 16;
constexpr int maxConnections = 128;

/// Listens on an address in Net-SNMP's notation. Its agent must be initialised. False if it cannot.
bool listen(const QString& address);

} // namespace agent::snmpListener

#endif
