// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_SAVEDAPPLICATION_H
#define VIGIL_AGENT_APPLICATIONS_SAVEDAPPLICATION_H

#include <vector>

#include "agent/applications/ApplicationInfo.h"
#include "agent/cells/LostCheck.h"

namespace agent {

/// An application as the agent keeps it over a restart: who it is, and its health checks.
struct SavedApplication
{
    ApplicationInfo info; ///< its number and counts mean nothing in the next run
    std::vector<LostCheck> checks;
};

} // namespace agent

#endif
