// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/AgentxSession.h"

// For systems where nothing can interrupt Net-SNMP's connect, which would stop the event loop. The command
// line refuses to join a master there.
namespace agent {

AgentxSession::AgentxSession(const QString&, Clock&) {}

QString AgentxSession::defaultAddress()
{
    return {};
}

void AgentxSession::initialise() {}

void AgentxSession::prepareToEnd() {}

bool AgentxSession::open()
{
    return false;
}

bool AgentxSession::registerTree(const ObjectId&)
{
    return false;
}

bool AgentxSession::ping()
{
    return false;
}

void AgentxSession::hangUp() {}

} // namespace agent
