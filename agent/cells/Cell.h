// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_CELL_H
#define VIGIL_AGENT_CELLS_CELL_H

#include <QtGlobal>

#include <memory>
#include <string>
#include <variant>

namespace agent {

/// Identifies an application, connected or lost. Numbers start at 1 and are never reused in one run of the
/// agent: an application that reconnects gets a new one.
using ApplicationId = quint64;

using CellValue = std::variant<int, std::string>;

struct Cell
{
    CellValue value;                        ///< the owner's, as published
    ApplicationId owner = 0;                ///< the application that published the value last
    std::unique_ptr<const CellValue> cover; ///< the agent's own, if it knows better

    /// What managers read.
    const CellValue& served() const { return cover ? *cover : value; }
};

} // namespace agent

#endif
