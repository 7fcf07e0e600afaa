// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/AllocationCounter.h"

#include <atomic>
#include <cstddef>

namespace {

// Counting costs time: both threads would fight for the cache line. So it is off while time is measured.
std::atomic<bool> isCounting{false};
std::atomic<std::uint64_t> allocations{0};

void countOne()
{
    if (isCounting.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

AllocationCounter::AllocationCounter()
{
    allocations = 0;
    isCounting = true;
}

AllocationCounter::~AllocationCounter()
{
    isCounting = false;
}

std::uint64_t AllocationCounter::count() const
{
    return allocations;
}

// Replaces glibc's functions in the whole process. operator new calls malloc(), and so does Qt.

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) noexcept
{
    countOne();
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    countOne();
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) noexcept
{
    countOne();
    return __libc_realloc(memory, size);
}

} // extern "C"
