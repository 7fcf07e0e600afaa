// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_CELLSTORE_H
#define VIGIL_AGENT_CELLS_CELLSTORE_H

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// Everything that the applications have published, in the order in which a manager walks it.
///
/// Purpose: maps identifiers to cells. A cell belongs to the last application that wrote it, and only the
/// owner can take it away. The agent can cover a value with another one, which managers read in its place.
///
/// Threads: the agent has one. Ownership: holds its cells by value; pointers to them are good until the next
/// change.
class CellStore
{
public:
    using Cells = std::map<ObjectId, Cell>;
    using Entry = Cells::value_type;

    /// Leaves a cover where it is. Returns the owner from whom the cell has been taken over, if it had
    /// another one.
    std::optional<ApplicationId> set(const ObjectId& id, CellValue value, ApplicationId owner);

    /// Gives an existing cell a new value and leaves it with its owner.
    void changeValue(const ObjectId& id, CellValue value);

    /// Removes the owner's cells at and below tree. Returns their identifiers.
    std::vector<ObjectId> unsetTree(const ObjectId& tree, ApplicationId owner);

    std::vector<ObjectId> removeAllOf(ApplicationId owner);

    /// The owner's cells at and below tree.
    std::vector<ObjectId> idsOf(ApplicationId owner, const ObjectId& tree) const;

    /// Both do nothing when there is no such cell.
    void cover(const ObjectId& id, CellValue value);
    void uncover(const ObjectId& id);

    /// Null when there is no such cell.
    const Cell* find(const ObjectId& id) const;

    /// The first cell behind id, null when there is none.
    const Entry* findNext(const ObjectId& id) const;

    /// The cell at id or else the first one behind it, null when there is none.
    const Entry* findAtOrNext(const ObjectId& id) const;

    size_t size() const { return m_cells.size(); }
    size_t countOf(ApplicationId owner) const;

private:
    struct ByTarget
    {
        using is_transparent = void;
        bool operator()(const ObjectId* left, const ObjectId* right) const { return *left < *right; }
        bool operator()(const ObjectId* left, const ObjectId& right) const { return *left < right; }
        bool operator()(const ObjectId& left, const ObjectId* right) const { return left < *right; }
    };
    using OwnedIds = std::set<const ObjectId*, ByTarget>;

    void forget(ApplicationId owner, const ObjectId& id);

    Cells m_cells;
    // Keys of m_cells, so that an unset costs what its sender owns, however large the other applications are.
    std::map<ApplicationId, OwnedIds> m_idsByOwner;
};

} // namespace agent

#endif
