// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_OWNEDIDS_H
#define VIGIL_AGENT_CELLS_OWNEDIDS_H

#include <cstddef>
#include <vector>

#include "agent/core/ObjectId.h"

namespace agent {

/// Pointers to the identifiers of an application's cells, in the order of the identifiers.
///
/// They are kept in sorted blocks: a pointer takes about 14 bytes, where a node of a set takes 48. A change
/// moves the pointers of one block, however many cells there are.
///
/// Ownership: the identifiers must outlive their pointers here.
class OwnedIds
{
public:
    /// id must not be there yet.
    void insert(const ObjectId* id);

    /// id must be there. Takes no memory.
    void erase(const ObjectId& id);

    /// The identifiers at and below tree.
    std::vector<const ObjectId*> within(const ObjectId& tree) const;

    /// The first ones, at most as many as given.
    std::vector<const ObjectId*> first(size_t most) const;

    size_t size() const { return m_size; }

private:
    using Block = std::vector<const ObjectId*>;
    using Blocks = std::vector<Block>;

    static Block makeBlock();
    static Block::const_iterator positionIn(const Block& block, const ObjectId& id);
    size_t blockOf(const ObjectId& id) const;
    void split(size_t block);
    void mergeWithNext(size_t block);

    Blocks m_blocks; // none is empty
    size_t m_size = 0;
};

} // namespace agent

#endif
