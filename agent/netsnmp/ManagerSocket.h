// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MANAGERSOCKET_H
#define VIGIL_AGENT_NETSNMP_MANAGERSOCKET_H

#include <QHostAddress>
#include <QString>

#include <vector>

#include "agent/netsnmp/NetSnmp.h"

/// What differs between systems about Net-SNMP's sockets to managers. One source file for each system.
namespace agent::managerSocket {

/// How long a manager may leave an answer over TCP where it is. The agent waits meanwhile; then it ends the
/// connection.
constexpr int longestStandstillMs = 1000;

/// It waits in such steps: a signal, or a pause of a virtual machine, uses up one of them and not all.
constexpr int standstillStepMs = 100;

/// The sockets in a set. Net-SNMP says that their numbers are below count.
std::vector<int> listOf(netsnmp_large_fd_set& set, int count);

/// The address of the manager at the other end.
QHostAddress peerOf(int socket);

void close(int socket);

/// Makes a socket that listens ready for use: no other program can take its port over. A manager that reads
/// slowly gets whole answers, and one that reads nothing is disconnected. False if another program has the
/// port.
bool prepare(netsnmp_transport& listener);

/// Why an address that cannot be used may be taken, if the system knows better than the general message; else
/// empty.
QString reasonFor(const QString& address);

} // namespace agent::managerSocket

#endif
