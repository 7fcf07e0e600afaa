// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_OWNFILES_H
#define VIGIL_AGENT_NETSNMP_OWNFILES_H

#include <QByteArray>

namespace agent {

/// Keeps Net-SNMP from the host's files. Some it reads or writes without a switch; directory takes these.
/// Call it before Net-SNMP is initialised.
void keepToOwnFiles(const QByteArray& directory);

} // namespace agent

#endif
