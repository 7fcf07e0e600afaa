// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_LOSTCHECK_H
#define VIGIL_AGENT_CELLS_LOSTCHECK_H

#include <string>

#include "agent/core/ObjectId.h"

namespace agent {

/// The row of a health check of a lost application, as the application last published it.
struct LostCheck
{
    ObjectId check; ///< the index of its row
    int status = 0;
    std::string summary;
};

} // namespace agent

#endif
