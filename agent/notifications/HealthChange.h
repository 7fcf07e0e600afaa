// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_HEALTHCHANGE_H
#define VIGIL_AGENT_NOTIFICATIONS_HEALTHCHANGE_H

#include <string>

#include "agent/cells/HealthTable.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// A change of a health check, as managers are notified of it.
struct HealthChange
{
    ObjectId check; ///< the index of its row
    int status = healthTable::unknownStatus;
    int previousStatus = healthTable::unknownStatus; ///< in the last notification; UNKNOWN in the first
    std::string summary;
    bool isForgotten = false; ///< the row has gone, since its application has been lost for long
};

} // namespace agent

#endif
