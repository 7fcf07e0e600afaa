// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <new>

#include <vigil/HealthCheck.h>

#include "health/HealthCheckImpl.h"
#include "support/CheckPointer.h"
#include "support/LibraryTest.h"

using support::CheckPointer;
using support::makeCheck;

namespace {

thread_local std::size_t failingSize = 0;
thread_local bool throwsNumber = false;

/// Lets allocations of one size fail on this thread during its lifetime.
class FailingAllocation
{
public:
    explicit FailingAllocation(std::size_t size) { failingSize = size; }
    ~FailingAllocation() { failingSize = 0; }
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
};

} // namespace

void* operator new(std::size_t size)
{
    if (size != failingSize) {
        if (void* memory = std::malloc(size == 0 ? 1 : size))
            return memory;
    }
    if (throwsNumber)
        throw 1;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

class AllocationFailure : public support::LibraryTest
{
};

TEST_F(AllocationFailure, CreateHealthCheckReturnsNullAndCountsNoCheck)
{
    CheckPointer first = makeCheck("app", "1");
    {
        const FailingAllocation ofACheck(sizeof(HealthCheckImpl));
        EXPECT_EQ(vigil::createHealthCheck("app", "2"), nullptr);
    }
    EXPECT_EQ(log.count("[VigilSnmp::cleanup] Cleanup."), 0);
    first.reset();
    EXPECT_EQ(log.count("[VigilSnmp::cleanup] Cleanup."), 1);
}

TEST_F(AllocationFailure, AnyOtherExceptionOfCreateHealthCheckCountsNoCheckEither)
{
    CheckPointer first = makeCheck("app", "1");
    {
        const FailingAllocation ofACheck(sizeof(HealthCheckImpl));
        throwsNumber = true;
        EXPECT_THROW(vigil::createHealthCheck("app", "2"), int);
        throwsNumber = false;
    }
    first.reset();
    EXPECT_EQ(log.count("[VigilSnmp::cleanup] Cleanup."), 1);
}

} // namespace
