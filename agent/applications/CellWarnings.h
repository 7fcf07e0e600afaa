// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_CELLWARNINGS_H
#define VIGIL_AGENT_APPLICATIONS_CELLWARNINGS_H

#include <QString>

#include <map>
#include <set>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// Warnings about single cells, each once and not at every update.
///
/// Purpose: keeps an application that publishes what cannot be served from filling the log, and the memory of
/// what has been said from growing with what it sends.
///
/// Threads: the agent has one. Ownership: none. Failure: beyond a number of warnings for one application the
/// others are not written, which the last one says.
class CellWarnings
{
public:
    /// The most warnings for one application.
    static constexpr size_t maxPerOwner = 1000;

    /// Writes the text unless the same has been written about the cell.
    void warn(ApplicationId owner, const ObjectId& id, const QString& text);

    /// The owner is gone.
    void forget(ApplicationId owner) { m_said.erase(owner); }

private:
    std::map<ApplicationId, std::set<size_t>> m_said; // hashes: identifiers may be long
};

/// The identifier for a message, cut where SNMP's own ones end.
QString shortText(const ObjectId& id);

} // namespace agent

#endif
