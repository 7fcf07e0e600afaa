// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/MemoryShares.h"

namespace agent {

namespace {

bool isFair(const User& user, size_t ofUser, size_t ofAll, size_t limit)
{
    return ofAll <= limit && (user == platform::rootUser() || ofUser <= limit - ofAll);
}

} // namespace

bool MemoryShares::makeRoomFor(ApplicationId application, const ObjectId& id, const CellValue& value)
{
    const size_t after = CellStore::memoryOf(id, value);
    if (2 * (m_cells.store().memory() + after) <= m_limits.cellMemory())
        return true; // most updates: no look-up
    const Cell* cell = m_cells.store().find(id);
    const size_t before = cell && cell->owner == application ? CellStore::memoryOf(id, cell->value) : 0;
    return after <= before || makeRoomFor(m_applications.find(application)->identity.user, after - before);
}

/// The oldest lost application makes room first. All stay if not even all of them together suffice.
bool MemoryShares::makeRoomFor(const User& user, size_t more)
{
    if (hasRoomFor(user, more))
        return true;
    const size_t lost = m_applications.lostMemoryOf(user);
    const size_t kept = m_applications.cellMemoryOf(user) - lost;
    if (!isFair(user, kept + more, m_cells.store().memory() - lost + more, m_limits.cellMemory()))
        return false;
    while (!hasRoomFor(user, more)) {
        if (!m_cells.removeSomeLostOf(user))
            return false;
    }
    return true;
}

bool MemoryShares::hasRoomFor(const User& user, size_t more) const
{
    return isFair(user, m_applications.cellMemoryOf(user) + more, m_cells.store().memory() + more,
                  m_limits.cellMemory());
}

bool MemoryShares::changeFrame(const User& user, size_t before, size_t after)
{
    m_frames += after - before;
    return after <= before ||
           isFair(user, m_applications.frameMemoryOf(user), m_frames, m_limits.frameMemory());
}

} // namespace agent
