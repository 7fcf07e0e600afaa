// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/CellStore.h"

#include <utility>

namespace agent {

std::optional<ApplicationId> CellStore::set(const ObjectId& id, CellValue value, ApplicationId application)
{
    const auto [position, isNew] = m_cells.try_emplace(id);
    Cell& cell = position->second;
    cell.value = std::move(value);
    if (cell.cover && cell.cover->reason == Cover::Reason::Committed)
        cell.cover.reset();
    const ApplicationId previous = std::exchange(cell.owner, application);
    if (!isNew && previous == application)
        return std::nullopt;
    m_idsByOwner[application].insert(&position->first);
    if (isNew)
        return std::nullopt;
    disown(previous, id);
    return previous;
}

void CellStore::disown(ApplicationId application, const ObjectId& id)
{
    const auto owned = m_idsByOwner.find(application);
    owned->second.erase(&id);
    if (owned->second.empty())
        m_idsByOwner.erase(owned);
}

void CellStore::dropCommitted(ApplicationId application)
{
    const auto owned = m_idsByOwner.find(application);
    if (owned == m_idsByOwner.end())
        return;
    for (const ObjectId* id : owned->second) {
        Cell& cell = m_cells.find(*id)->second;
        if (cell.cover && cell.cover->reason == Cover::Reason::Committed)
            cell.cover.reset();
    }
}

std::vector<ObjectId> CellStore::unsetTree(const ObjectId& tree, ApplicationId application)
{
    std::vector<ObjectId> removed;
    const auto owned = m_idsByOwner.find(application);
    if (owned == m_idsByOwner.end())
        return removed;
    OwnedIds& ids = owned->second;
    auto position = ids.lower_bound(tree);
    while (position != ids.end() && isInTree(tree, **position)) {
        const auto cell = m_cells.find(**position);
        position = ids.erase(position);
        removed.push_back(std::move(m_cells.extract(cell).key()));
    }
    if (ids.empty())
        m_idsByOwner.erase(owned);
    return removed;
}

std::vector<ObjectId> CellStore::removeAllOf(ApplicationId application)
{
    return unsetTree(ObjectId(), application);
}

std::vector<ObjectId> CellStore::idsOf(ApplicationId application, const ObjectId& tree) const
{
    std::vector<ObjectId> found;
    const auto owned = m_idsByOwner.find(application);
    if (owned == m_idsByOwner.end())
        return found;
    const OwnedIds& ids = owned->second;
    for (auto id = ids.lower_bound(tree); id != ids.end() && isInTree(tree, **id); ++id)
        found.push_back(**id);
    return found;
}

void CellStore::cover(const ObjectId& id, Cover cover)
{
    const auto position = m_cells.find(id);
    if (position != m_cells.end())
        position->second.cover = std::make_unique<const Cover>(std::move(cover));
}

void CellStore::uncover(const ObjectId& id)
{
    const auto position = m_cells.find(id);
    if (position != m_cells.end())
        position->second.cover.reset();
}

size_t CellStore::countOf(ApplicationId application) const
{
    const auto owned = m_idsByOwner.find(application);
    return owned == m_idsByOwner.end() ? 0 : owned->second.size();
}

const Cell* CellStore::find(const ObjectId& id) const
{
    const auto position = m_cells.find(id);
    return position == m_cells.end() ? nullptr : &position->second;
}

const CellStore::Entry* CellStore::findNext(const ObjectId& id) const
{
    const auto position = m_cells.upper_bound(id);
    return position == m_cells.end() ? nullptr : &*position;
}

const CellStore::Entry* CellStore::findAtOrNext(const ObjectId& id) const
{
    const auto position = m_cells.lower_bound(id);
    return position == m_cells.end() ? nullptr : &*position;
}

} // namespace agent
