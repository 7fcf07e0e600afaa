// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_TRUSTEDHOST_H
#define VIGIL_AGENT_HTTP_TRUSTEDHOST_H

#include <QByteArray>

namespace agent {

/// Checks the Host header of a request. A foreign site may let its own name point to this host, and so make
/// a browser here read the agent's pages for it (DNS rebinding). An address cannot be pointed elsewhere.
///
/// True for an address, localhost, and this machine's own name, each with or without a port.
bool isTrustedHost(const QByteArray& header, const QByteArray& machineName);

} // namespace agent

#endif
