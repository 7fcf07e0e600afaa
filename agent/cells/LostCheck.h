// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_LOSTCHECK_H
#define VIGIL_AGENT_CELLS_LOSTCHECK_H

#include <cstddef>
#include <string>

#include "agent/core/ObjectId.h"

namespace agent {

/// A health check of an application that is lost, or will be when the agent ends, to be kept over a restart.
struct LostCheck
{
    /// A longer summary is cut: the state of many checks must fit into memory once more.
    static constexpr std::size_t longestSummary = 255;

    ObjectId check; ///< the index of its row
    int status = 0;
    std::string summary;
};

} // namespace agent

#endif
