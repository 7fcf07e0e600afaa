// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_MEMORYSHARES_H
#define VIGIL_AGENT_APPLICATIONS_MEMORYSHARES_H

#include <cstddef>

#include "agent/applications/ApplicationList.h"
#include "agent/applications/Limits.h"
#include "agent/cells/ServedCells.h"

namespace agent {

/// Shares the memory for cells and for unfinished frames fairly between users.
///
/// A user may take as much as remains free afterwards: half of all if alone, a third beside one other. So the
/// next user finds room, and none has to give anything back. Root may take everything.
///
/// Ownership: all that it is given must outlive it.
class MemoryShares
{
public:
    MemoryShares(ServedCells& cells, const ApplicationList& applications, const Limits& limits)
        : m_cells(cells), m_applications(applications), m_limits(limits)
    {}

    /// True if the application may publish the value. The lost applications of its user make room.
    bool makeRoomFor(ApplicationId application, const ObjectId& id, const CellValue& value);

    /// The memory of an application's unfinished frame has changed. False if it is more than the share of the
    /// user.
    bool changeFrame(const User& user, size_t before, size_t after);

    /// The memory of all unfinished frames.
    size_t frames() const { return m_frames; }

private:
    bool makeRoomFor(const User& user, size_t more);
    bool hasRoomFor(const User& user, size_t more) const;

    ServedCells& m_cells;
    const ApplicationList& m_applications;
    const Limits& m_limits;
    size_t m_frames = 0;
};

} // namespace agent

#endif
