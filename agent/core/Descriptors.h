// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_DESCRIPTORS_H
#define VIGIL_AGENT_CORE_DESCRIPTORS_H

/// The descriptors that this process may open. Connections must not use up the last ones: the agent needs
/// them to join snmpd, to read files and to ask the system for users.
namespace agent::descriptors {

/// Opens the null device in place of a standard stream that the caller has closed. Call it first: otherwise
/// the number goes to a descriptor of the agent's own, and the log is written there.
void openStandardStreams();

/// Raises the limit of the process, as far as permitted, so that it can open count more. False if the limit
/// stays too low.
bool require(int count);

/// True if a new connection with this descriptor would take one that the agent needs itself.
bool isReserved(int descriptor);

} // namespace agent::descriptors

#endif
