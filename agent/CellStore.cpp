#include "CellStore.h"

#include <utility>

namespace agent {

std::optional<OwnerId> CellStore::set(const ObjectId& id, CellValue value, OwnerId owner)
{
    const auto [position, isNew] = m_cells.try_emplace(id);
    Cell& cell = position->second;
    cell.value = std::move(value);
    const OwnerId previous = std::exchange(cell.owner, owner);
    if (!isNew && previous == owner)
        return std::nullopt;
    m_idsByOwner[owner].insert(&position->first);
    if (isNew)
        return std::nullopt;
    forget(previous, id);
    return previous;
}

void CellStore::forget(OwnerId owner, const ObjectId& id)
{
    const auto owned = m_idsByOwner.find(owner);
    owned->second.erase(&id);
    if (owned->second.empty())
        m_idsByOwner.erase(owned);
}

void CellStore::changeValue(const ObjectId& id, CellValue value)
{
    const auto position = m_cells.find(id);
    if (position != m_cells.end())
        position->second.value = std::move(value);
}

size_t CellStore::unsetTree(const ObjectId& tree, OwnerId owner)
{
    const auto owned = m_idsByOwner.find(owner);
    if (owned == m_idsByOwner.end())
        return 0;
    OwnedIds& ids = owned->second;
    const size_t before = ids.size();
    auto position = ids.lower_bound(tree);
    while (position != ids.end() && isInTree(tree, **position)) {
        const auto cell = m_cells.find(**position);
        position = ids.erase(position);
        m_cells.erase(cell);
    }
    const size_t removed = before - ids.size();
    if (ids.empty())
        m_idsByOwner.erase(owned);
    return removed;
}

size_t CellStore::removeAllOf(OwnerId owner)
{
    return unsetTree(ObjectId(), owner);
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
