// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/RowNumbers.h"

namespace agent {

unsigned int RowNumbers::take(const ObjectId& row, const IsUsed& isUsed)
{
    const auto gone = m_gone.find(row);
    if (gone == m_gone.end())
        return takeNew(isUsed);
    const unsigned int number = gone->second.number;
    m_order.erase(gone->second.place);
    m_gone.erase(gone);
    return number;
}

unsigned int RowNumbers::takeNew(const IsUsed& isUsed)
{
    do {
        if (m_last == m_largest)
            forgetAll();
        ++m_last;
    } while (isUsed(m_last));
    return m_last;
}

void RowNumbers::forgetAll()
{
    m_last = 0;
    m_gone.clear();
    m_order.clear();
}

void RowNumbers::release(const ObjectId& row, unsigned int number)
{
    const auto [gone, isNew] = m_gone.try_emplace(row);
    if (!isNew)
        return;
    gone->second = {number, m_order.insert(m_order.end(), &gone->first)};
    if (m_gone.size() <= remembered)
        return;
    const auto oldest = m_gone.find(*m_order.front());
    m_order.pop_front();
    m_gone.erase(oldest);
}

} // namespace agent
