// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_CELLSTORE_H
#define VIGIL_AGENT_CELLS_CELLSTORE_H

#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "agent/cells/Cell.h"
#include "agent/cells/OwnedIds.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// All published cells, in the order in which managers walk them.
///
/// A cell belongs to the application that wrote it last; no other application can remove it. The agent can
/// cover a cell: managers then read the cover.
///
/// Pointers to cells are valid until the next change.
class CellStore
{
public:
    CellStore() = default;
    CellStore(const CellStore&) = delete; // an iterator points into it
    CellStore& operator=(const CellStore&) = delete;

    using Cells = std::map<ObjectId, Cell>;
    using Entry = Cells::value_type;

    /// Keeps a cover in place, unless it is a committed value. Returns the previous owner if the cell had
    /// another one.
    std::optional<ApplicationId> set(const ObjectId& id, CellValue value, ApplicationId application);

    /// The owner has accepted a manager's value. Managers read it until the owner publishes another one.
    void commit(const ObjectId& id, CellValue value)
    {
        cover(id, {std::move(value), Cover::Reason::Committed});
    }

    /// The owner is lost. Its cells read as published: it may have ended before it took the committed values.
    void dropCommitted(ApplicationId application);

    /// Removes the application's own cells at and below tree. Returns their identifiers.
    std::vector<ObjectId> unsetTree(const ObjectId& tree, ApplicationId application);

    /// Removes the application's cells with these identifiers, which firstOf() or idsOf() has returned.
    void remove(ApplicationId application, const std::vector<ObjectId>& ids);

    /// Removes all cells of the application. Returns their identifiers.
    std::vector<ObjectId> removeAllOf(ApplicationId application);

    /// The first of the application's own cells, at most as many as given.
    std::vector<ObjectId> firstOf(ApplicationId application, size_t most) const;

    /// The application's own cells at and below tree.
    std::vector<ObjectId> idsOf(ApplicationId application, const ObjectId& tree) const;

    /// Both do nothing if there is no such cell.
    void cover(const ObjectId& id, Cover cover);
    void uncover(const ObjectId& id);

    /// Null if there is no such cell.
    const Cell* find(const ObjectId& id) const;

    /// The first cell after id, or null.
    const Entry* findNext(const ObjectId& id) const;

    /// The cell at id or else the first one after it, or null.
    const Entry* findAtOrNext(const ObjectId& id) const;

    size_t size() const { return m_cells.size(); }
    size_t countOf(ApplicationId application) const;

    /// The memory that a cell takes in the agent, roughly.
    static size_t memoryOf(const ObjectId& id, const CellValue& value);

    size_t memory() const { return m_memory; }
    size_t memoryOf(ApplicationId application) const;

private:
    struct Owned
    {
        OwnedIds ids;
        size_t memory = 0;
    };

    static size_t memoryOf(const Entry& entry);
    void disown(ApplicationId application, const ObjectId& id, size_t memory);
    void account(ApplicationId application, size_t before, size_t after);
    void setCover(Entry& entry, std::unique_ptr<const Cover> cover);

    Cells::iterator positionOf(const ObjectId& id);
    Cells::const_iterator positionOf(const ObjectId& id) const;

    Cells m_cells;
    // The agent asks for a cell several times while it takes one value. Only the first time is a look-up.
    mutable Cells::const_iterator m_found = m_cells.end();
    // Pointers to the keys of m_cells: removing cells must not cost more if other applications have many.
    std::map<ApplicationId, Owned> m_owned;
    size_t m_memory = 0;
};

} // namespace agent

#endif
