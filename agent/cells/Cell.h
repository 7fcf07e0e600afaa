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

/// A value of the agent's own that managers read in place of the owner's.
struct Cover
{
    enum class Reason {
        Stale,    ///< the owner has not updated its check for long
        Lost,     ///< the owner's connection has ended
        Committed ///< a manager has set the cell and the owner has accepted; it has not published since
    };

    CellValue value;
    Reason reason;
};

struct Cell
{
    CellValue value;                    ///< as the owner published it
    ApplicationId owner = 0;            ///< the application that published the value last
    std::unique_ptr<const Cover> cover; ///< null for most cells; a pointer keeps those small

    /// What managers read.
    const CellValue& served() const { return cover ? cover->value : value; }
};

} // namespace agent

#endif
