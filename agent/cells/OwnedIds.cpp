// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/OwnedIds.h"

#include <algorithm>

namespace agent {

namespace {
constexpr size_t blockSize = 64;
constexpr std::ptrdiff_t half = blockSize / 2;
} // namespace

/// A block never grows beyond its first memory.
OwnedIds::Block OwnedIds::makeBlock()
{
    Block block;
    block.reserve(blockSize);
    return block;
}

/// The block that has id, or where it belongs.
size_t OwnedIds::blockOf(const ObjectId& id) const
{
    const auto next =
        std::upper_bound(m_blocks.begin(), m_blocks.end(), id,
                         [](const ObjectId& left, const Block& right) { return left < *right.front(); });
    return next == m_blocks.begin() ? 0 : static_cast<size_t>(next - m_blocks.begin()) - 1;
}

OwnedIds::Block::const_iterator OwnedIds::positionIn(const Block& block, const ObjectId& id)
{
    return std::lower_bound(block.begin(), block.end(), id,
                            [](const ObjectId* left, const ObjectId& right) { return *left < right; });
}

void OwnedIds::insert(const ObjectId* id)
{
    size_t block = 0; // the very first one is still empty
    if (m_blocks.empty())
        m_blocks.push_back(makeBlock());
    else
        block = blockOf(*id);
    if (m_blocks[block].size() == blockSize) {
        split(block);
        block = blockOf(*id);
    }
    m_blocks[block].insert(positionIn(m_blocks[block], *id), id);
    ++m_size;
}

void OwnedIds::split(size_t block)
{
    const auto next = m_blocks.begin() + static_cast<std::ptrdiff_t>(block) + 1;
    Block& upper = *m_blocks.insert(next, makeBlock());
    Block& lower = m_blocks[block];
    upper.assign(lower.begin() + half, lower.end());
    lower.resize(static_cast<size_t>(half));
}

void OwnedIds::erase(const ObjectId& id)
{
    const size_t block = blockOf(id);
    Block& ids = m_blocks[block];
    ids.erase(positionIn(ids, id));
    --m_size;
    if (ids.empty()) {
        m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(block));
        return;
    }
    mergeWithNext(block);
    if (block > 0)
        mergeWithNext(block - 1);
}

/// Two neighbours together hold half a block at least. Many small blocks would take too much memory.
void OwnedIds::mergeWithNext(size_t block)
{
    if (block + 1 >= m_blocks.size())
        return;
    Block& lower = m_blocks[block];
    const Block& upper = m_blocks[block + 1];
    if (lower.size() + upper.size() > static_cast<size_t>(half))
        return;
    lower.insert(lower.end(), upper.begin(), upper.end());
    m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(block) + 1);
}

std::vector<const ObjectId*> OwnedIds::within(const ObjectId& tree) const
{
    std::vector<const ObjectId*> found;
    const size_t first = blockOf(tree);
    for (size_t block = first; block < m_blocks.size(); ++block) {
        const Block& ids = m_blocks[block];
        for (auto id = block == first ? positionIn(ids, tree) : ids.begin(); id != ids.end(); ++id) {
            if (!isInTree(tree, **id))
                return found;
            found.push_back(*id);
        }
    }
    return found;
}

std::vector<const ObjectId*> OwnedIds::first(size_t most) const
{
    std::vector<const ObjectId*> found;
    for (const Block& ids : m_blocks) {
        const size_t taken = std::min(ids.size(), most - found.size());
        found.insert(found.end(), ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(taken));
        if (found.size() == most)
            break;
    }
    return found;
}

} // namespace agent
