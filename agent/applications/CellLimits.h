// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_CELLLIMITS_H
#define VIGIL_AGENT_APPLICATIONS_CELLLIMITS_H

#include "agent/applications/Limits.h"
#include "agent/cells/CellStore.h"
#include "agent/core/Error.h"

namespace agent {

/// Checks values of applications against the limits; the agent serves the accepted ones.
///
/// An error continues a sentence that starts with the application's name, and tells the operator what to do.
///
/// Ownership: the store must outlive it.
class CellLimits
{
public:
    CellLimits(const CellStore& store, const Limits& limits) : m_store(store), m_limits(limits) {}

    /// Checks the identifier and the length of a text.
    Error checkCell(const ObjectId& id, const CellValue& value) const;

    /// Checks how many cells the application owns; its own cells can always change.
    Error checkCount(ApplicationId application, const ObjectId& id) const;

private:
    Error checkText(const ObjectId& id, const CellValue& value) const;

    const CellStore& m_store;
    const Limits m_limits;
};

} // namespace agent

#endif
