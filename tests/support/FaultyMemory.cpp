// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/FaultyMemory.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <new>

using faults::OutOfMemory;

namespace {

struct Plan
{
    bool isActive = false;
    bool hasFailed = false;
    int succeeding = 0;
    OutOfMemory::Extent extent = OutOfMemory::Extent::OneAllocation;
    OutOfMemory::Callers callers = OutOfMemory::Callers::All;
};

thread_local Plan plan;

bool isQt(const void* caller)
{
    Dl_info info{};
    return dladdr(caller, &info) != 0 && info.dli_fname && std::strstr(info.dli_fname, "libQt5");
}

/// caller is null for the functions of C. The library itself calls none of them.
bool mustFail(const void* caller)
{
    if (!plan.isActive)
        return false;
    if (plan.callers == OutOfMemory::Callers::AllButQt && (!caller || isQt(caller)))
        return false;
    if (plan.succeeding-- > 0)
        return false;
    plan.isActive = plan.extent == OutOfMemory::Extent::AllFurther;
    plan.hasFailed = true;
    return true;
}

} // namespace

OutOfMemory::OutOfMemory(int succeedingFirst, Extent extent, Callers callers)
{
    plan = {true, false, succeedingFirst, extent, callers};
}

OutOfMemory::~OutOfMemory()
{
    plan.isActive = false;
}

bool OutOfMemory::hasFailed() const
{
    return plan.hasFailed;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

namespace {

void* allocate(std::size_t size)
{
    return std::malloc(size);
}

} // namespace

#else

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): of the system
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept
{
    return mustFail(nullptr) ? nullptr : __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept
{
    return mustFail(nullptr) ? nullptr : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) noexcept
{
    return mustFail(nullptr) ? nullptr : __libc_realloc(memory, size);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace {

void* allocate(std::size_t size)
{
    return __libc_malloc(size);
}

} // namespace

#endif

void* operator new(std::size_t size)
{
    void* memory = mustFail(__builtin_return_address(0)) ? nullptr : allocate(size == 0 ? 1 : size);
    return memory ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
