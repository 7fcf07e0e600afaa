// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_CELLWARNINGS_H
#define VIGIL_AGENT_APPLICATIONS_CELLWARNINGS_H

#include <QString>

#include <map>
#include <set>

#include "agent/cells/Owner.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// Logs warnings about cells, one for each cell and not one for each update.
///
/// A defective application must fill neither the log nor the memory. After maxPerApplication warnings a last
/// line announces that the rest is suppressed.
class CellWarnings
{
public:
    static constexpr size_t maxPerApplication = 1000;

    /// Logs the text, after the application's name, unless there was a warning about the cell before.
    void warn(const Owner& application, const ObjectId& id, const QString& text);

    /// The application has disconnected.
    void forget(ApplicationId application) { m_warned.erase(application); }

private:
    std::map<ApplicationId, std::set<size_t>> m_warned; // hashes: identifiers can be long
};

} // namespace agent

#endif
