// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Each allocation fails once while handles of C++ and of C are made, used and ended. They report it, and
// leave no row.

#include <vigil/raii.h>
#include <vigil/vigil_c.h>

#include <gmock/gmock.h>

#include <QLoggingCategory>

#include <functional>
#include <new>

#include "support/FaultyMemory.h"
#include "support/LibraryTest.h"
#include "support/Load.h"
#include "support/ShownCells.h"

using faults::OutOfMemory;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

namespace {

class HandlesOutOfMemory : public support::LibraryTest
{
protected:
    HandlesOutOfMemory()
    {
        // Qt writes debug lines in a destructor, so it ends the process if there is no memory for one.
        QLoggingCategory::setFilterRules(QStringLiteral("vigil.*.debug=false"));
        start();
        keeper = vigil::CheckHandle("app", "keeper");
    }

    void atEachAllocation(const std::function<void()>& operation)
    {
        bool hasFailed = true;
        for (int succeeding = 0; hasFailed && !HasFailure(); succeeding += support::isFullLoad() ? 7 : 101) {
            SCOPED_TRACE(succeeding);
            {
                const OutOfMemory fault(succeeding, OutOfMemory::Extent::OneAllocation,
                                        OutOfMemory::Callers::AllButQt);
                operation();
                hasFailed = fault.hasFailed();
            }
            settle();
        }
        const support::ShownCells shown(service.frames());
        EXPECT_THAT(shown.cells(), Not(Contains(Pair(HasSubstr(".4.115.104.111.114.116"), testing::_))))
            << "a row of the check \"short\"";
    }

    vigil::CheckHandle keeper;
};

} // namespace

TEST_F(HandlesOutOfMemory, ThrowAndLeaveNoRow)
{
    int throws = 0;
    atEachAllocation([&] {
        try {
            vigil::CheckHandle check("app", "short");
            vigil::ScalarHandle metric(check, "metric");
            vigil::SimpleHandle other(check, "other");
            check.setFunction(1, [] {});
            metric.setRangeHandler([](vigil::RangeKind, const vigil::Range&) { return true; });
            metric.setValue(1);
            other.set(vigil::HealthStatus::Ok, "text");
            check.update();
        } catch (const std::bad_alloc&) {
            ++throws;
        }
    });
    EXPECT_GT(throws, 0);
}

TEST_F(HandlesOutOfMemory, OfCReturnACodeAndLeaveNoRow)
{
    int refusals = 0;
    const auto count = [&](vigil_code code) {
        EXPECT_TRUE(code == VIGIL_OK || code == VIGIL_NO_MEMORY || code == VIGIL_NULL)
            << vigil_code_name(code);
        refusals += code == VIGIL_NO_MEMORY ? 1 : 0;
    };
    atEachAllocation([&] {
        vigil_check* check = nullptr;
        vigil_metric* metric = nullptr;
        count(vigil_check_create("app", "short", &check));
        count(vigil_scalar_create(check, "metric", &metric)); // VIGIL_NULL without a check
        count(vigil_scalar_set_value(metric, 1));
        count(vigil_check_set_function(
            check, [](void*, int) {}, nullptr));
        count(vigil_check_update(check));
        EXPECT_EQ(vigil_metric_free(metric), VIGIL_OK);
        EXPECT_EQ(vigil_check_free(check), VIGIL_OK);
    });
    EXPECT_GT(refusals, 0);
}
