// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/CellStore.h"

#include <utility>

#include "agent/cells/HealthTable.h"

namespace agent {

namespace {

/// What other parts of the agent keep for a cell.
struct Shadow
{
    size_t overhead; // nodes and heap blocks
    size_t keys;     // copies of the identifier, roughly
};

constexpr size_t cellOverhead = 256;
constexpr Shadow ofCheck = {480, 4};
constexpr Shadow ofResult = {160, 1};

Shadow shadowOf(const ObjectId& id)
{
    static const ObjectId checkStatus = healthTable::column(healthTable::Column::Status);
    static const ObjectId resultStatus = resultTable().column(StatusTable::Column::Status);
    if (isInTree(checkStatus, id))
        return ofCheck;
    return isInTree(resultStatus, id) ? ofResult : Shadow{0, 0};
}

size_t memoryOf(const CellValue& value)
{
    const std::string* text = std::get_if<std::string>(&value);
    return text ? text->size() : 0;
}

} // namespace

CellStore::Cells::const_iterator CellStore::positionOf(const ObjectId& id) const
{
    if (m_found == m_cells.end() || m_found->first != id)
        m_found = m_cells.find(id);
    return m_found;
}

CellStore::Cells::iterator CellStore::positionOf(const ObjectId& id)
{
    const Cells::const_iterator position = std::as_const(*this).positionOf(id);
    return m_cells.erase(position, position); // removes nothing, but returns what may change the cell
}

std::optional<ApplicationId> CellStore::set(const ObjectId& id, CellValue value, ApplicationId application)
{
    const auto known = positionOf(id);
    const bool isNew = known == m_cells.end();
    const auto position = isNew ? m_cells.try_emplace(id).first : known;
    Cell& cell = position->second;
    const size_t before = isNew ? 0 : memoryOf(*position);
    cell.value = std::move(value);
    if (cell.cover && cell.cover->reason == Cover::Reason::Committed)
        cell.cover.reset();
    const size_t after = memoryOf(*position);
    const ApplicationId previous = std::exchange(cell.owner, application);
    if (!isNew && previous == application) {
        account(application, before, after);
        return std::nullopt;
    }
    m_owned[application].ids.insert(&position->first);
    account(application, 0, after);
    if (isNew)
        return std::nullopt;
    disown(previous, id, before);
    return previous;
}

void CellStore::disown(ApplicationId application, const ObjectId& id, size_t memory)
{
    account(application, memory, 0);
    const auto owned = m_owned.find(application);
    owned->second.ids.erase(id);
    if (owned->second.ids.size() == 0)
        m_owned.erase(owned);
}

/// The application must own a cell.
void CellStore::account(ApplicationId application, size_t before, size_t after)
{
    if (before == after)
        return; // most updates: no look-up
    m_memory += after - before;
    m_owned.at(application).memory += after - before;
}

size_t CellStore::memoryOf(const ObjectId& id, const CellValue& value)
{
    const auto [overhead, keys] = shadowOf(id);
    return cellOverhead + overhead + (1 + keys) * id.size() * sizeof(id[0]) + agent::memoryOf(value);
}

size_t CellStore::memoryOf(const Entry& entry)
{
    const auto& [id, cell] = entry;
    const size_t cover = cell.cover ? sizeof(Cover) + agent::memoryOf(cell.cover->value) : 0;
    return memoryOf(id, cell.value) + cover;
}

size_t CellStore::memoryOf(ApplicationId application) const
{
    const auto owned = m_owned.find(application);
    return owned == m_owned.end() ? 0 : owned->second.memory;
}

void CellStore::setCover(Entry& entry, std::unique_ptr<const Cover> cover)
{
    const size_t before = memoryOf(entry);
    entry.second.cover = std::move(cover);
    account(entry.second.owner, before, memoryOf(entry));
}

void CellStore::dropCommitted(ApplicationId application)
{
    const auto owned = m_owned.find(application);
    if (owned == m_owned.end())
        return;
    for (const ObjectId* id : owned->second.ids.within(ObjectId())) {
        Entry& entry = *m_cells.find(*id);
        if (entry.second.cover && entry.second.cover->reason == Cover::Reason::Committed)
            setCover(entry, nullptr);
    }
}

std::vector<ObjectId> CellStore::unsetTree(const ObjectId& tree, ApplicationId application)
{
    std::vector<ObjectId> removed;
    const auto owned = m_owned.find(application);
    if (owned == m_owned.end())
        return removed;
    m_found = m_cells.end();
    OwnedIds& ids = owned->second.ids;
    const std::vector<const ObjectId*> found = ids.within(tree);
    removed.reserve(found.size());
    for (const ObjectId* id : found) {
        const auto cell = m_cells.find(*id);
        account(application, memoryOf(*cell), 0);
        ids.erase(*id);
        removed.push_back(std::move(m_cells.extract(cell).key()));
    }
    if (ids.size() == 0)
        m_owned.erase(owned);
    return removed;
}

void CellStore::remove(ApplicationId application, const std::vector<ObjectId>& ids)
{
    m_found = m_cells.end();
    for (const ObjectId& id : ids) {
        const auto cell = m_cells.find(id);
        disown(application, id, memoryOf(*cell));
        m_cells.erase(cell);
    }
}

std::vector<ObjectId> CellStore::removeAllOf(ApplicationId application)
{
    return unsetTree(ObjectId(), application);
}

std::vector<ObjectId> CellStore::idsOf(ApplicationId application, const ObjectId& tree) const
{
    std::vector<ObjectId> found;
    const auto owned = m_owned.find(application);
    if (owned == m_owned.end())
        return found;
    for (const ObjectId* id : owned->second.ids.within(tree))
        found.push_back(*id);
    return found;
}

std::vector<ObjectId> CellStore::firstOf(ApplicationId application, size_t most) const
{
    std::vector<ObjectId> found;
    const auto owned = m_owned.find(application);
    if (owned == m_owned.end())
        return found;
    for (const ObjectId* id : owned->second.ids.first(most))
        found.push_back(*id);
    return found;
}

void CellStore::cover(const ObjectId& id, Cover cover)
{
    const auto position = positionOf(id);
    if (position != m_cells.end())
        setCover(*position, std::make_unique<const Cover>(std::move(cover)));
}

void CellStore::uncover(const ObjectId& id)
{
    const auto position = positionOf(id);
    if (position != m_cells.end())
        setCover(*position, nullptr);
}

size_t CellStore::countOf(ApplicationId application) const
{
    const auto owned = m_owned.find(application);
    return owned == m_owned.end() ? 0 : owned->second.ids.size();
}

const Cell* CellStore::find(const ObjectId& id) const
{
    const auto position = positionOf(id);
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
