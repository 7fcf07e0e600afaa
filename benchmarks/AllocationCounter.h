// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_ALLOCATIONCOUNTER_H
#define VIGIL_BENCHMARKS_ALLOCATIONCOUNTER_H

#include <cstdint>

/// Counts the heap allocations of all threads while it lives: operator new, Qt's containers, everything.
class AllocationCounter
{
public:
    AllocationCounter();
    ~AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    std::uint64_t count() const;
};

#endif
