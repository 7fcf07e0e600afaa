// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_ROWNUMBERS_H
#define VIGIL_AGENT_CHECKS_ROWNUMBERS_H

#include <cstddef>
#include <functional>
#include <limits>
#include <list>
#include <map>

#include "agent/core/ObjectId.h"

namespace agent {

/// Numbers the rows of a table, from 1.
///
/// A returning row gets its old number again: graphs and configurations refer to it. To bound the memory,
/// only the last rows to go are remembered. A forgotten row gets a new number.
///
/// Numbers are not reused before the largest one has been given. Then counting starts at 1 again, past the
/// numbers in use, and all remembered rows are forgotten.
class RowNumbers
{
public:
    static constexpr unsigned int largest = std::numeric_limits<int>::max();
    static constexpr size_t remembered = 10'000;

    /// True if a row has this number now.
    using IsUsed = std::function<bool(unsigned int number)>;

    explicit RowNumbers(unsigned int last = largest) : m_largest(last) {}

    /// The number of a new or returning row. There must be a number not in use.
    unsigned int take(const ObjectId& row, const IsUsed& isUsed);

    /// The row has gone.
    void release(const ObjectId& row, unsigned int number);

    /// The remembered rows.
    size_t size() const { return m_gone.size(); }

private:
    struct Gone
    {
        unsigned int number;
        std::list<const ObjectId*>::iterator place;
    };

    unsigned int takeNew(const IsUsed& isUsed);
    void forgetAll();

    const unsigned int m_largest;
    unsigned int m_last = 0;
    std::map<ObjectId, Gone> m_gone;
    std::list<const ObjectId*> m_order; // the first row to go is in front
};

} // namespace agent

#endif
