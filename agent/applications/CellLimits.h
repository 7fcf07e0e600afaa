// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_CELLLIMITS_H
#define VIGIL_AGENT_APPLICATIONS_CELLLIMITS_H

#include <QString>

#include "agent/applications/Limits.h"
#include "agent/cells/CellStore.h"

namespace agent {

/// Decides which values of applications can be served.
///
/// Purpose: each function says why a value cannot be and what to do about it, or returns an empty text.
///
/// Threads: the agent has one. Ownership: the store must outlive it. Failure: none.
class CellLimits
{
public:
    CellLimits(const CellStore& store, const Limits& limits) : m_store(store), m_limits(limits) {}

    /// What is wrong with this very cell.
    QString cellProblem(const ObjectId& id, const CellValue& value) const;

    /// Whether the owner has room for the cell.
    QString countProblem(ApplicationId owner, const ObjectId& id) const;

private:
    QString identifierProblem(const ObjectId& id) const;
    QString textProblem(const ObjectId& id, const CellValue& value) const;

    const CellStore& m_store;
    const Limits m_limits;
};

} // namespace agent

#endif
