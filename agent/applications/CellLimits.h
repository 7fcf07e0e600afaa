// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_CELLLIMITS_H
#define VIGIL_AGENT_APPLICATIONS_CELLLIMITS_H

#include "agent/applications/Limits.h"
#include "agent/cells/CellStore.h"
#include "agent/core/Error.h"

namespace agent {

/// Checks values of applications against the limits. The agent serves the accepted ones, and long texts cut.
///
/// An error continues a sentence that starts with the application's name, and tells the operator what to do.
///
/// Ownership: the store must outlive it.
class CellLimits
{
public:
    CellLimits(const CellStore& store, const Limits& limits) : m_store(store), m_limits(limits) {}

    static Error checkIdentifier(const ObjectId& id);

    /// Checks the length of a text.
    Error checkText(const ObjectId& id, const CellValue& value) const;

    /// The value with its text cut to the length allowed.
    CellValue cutText(const CellValue& value) const;

    /// Checks how many cells the application owns; its own cells can always change.
    Error checkCount(ApplicationId application, const ObjectId& id) const;

private:
    const CellStore& m_store;
    const Limits m_limits;
};

} // namespace agent

#endif
