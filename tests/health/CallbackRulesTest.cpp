// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <functional>
#include <string>
#include <vector>

#include <vigil/HealthCheck.h>
#include <vigil/ScalarMetric.h>
#include <vigil/SimpleMetric.h>

#include "support/CheckPointer.h"
#include "support/LibraryTest.h"
#include "support/RecordingManagementHandler.h"
#include "support/RecordingRangeHandler.h"

using support::cell;
using support::CheckPointer;
using support::makeCheck;
using support::set;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

/// The calls forbidden inside a callback: they would wait for a lock held by their own thread.
class CallbackRules : public support::LibraryTest
{
protected:
    const std::vector<std::string> checkRow = {"app", "hc"};
    const std::string warningCell = cell(2, 3, {"app", "hc", "cpu"});

    CallbackRules()
    {
        start();
        managementHandler.onCall = [this] { breakEveryRule(); };
        rangeHandler.onAsked = [this](auto&) { breakEveryRule(); };
        rangeHandler.onChanged = [this](auto&) { breakEveryRule(); };
        check->registerManagementHandler(&managementHandler);
        scalar->setRangeChangeHandler(&rangeHandler);
        publications();
    }

    ~CallbackRules() override
    {
        check->unregisterManagementHandler();
        scalar->clearRangeChangeHandler();
        scalar->remove();
        simple->remove();
    }

    void breakEveryRule()
    {
        check->registerManagementHandler(&managementHandler);
        check->unregisterManagementHandler();
        scalar->setRangeChangeHandler(nullptr);
        scalar->clearRangeChangeHandler();
        scalar->remove();
        simple->remove();
        check->destroy();
        facade.cleanup();
    }

    void expectEachCallToBeRefused(int times) const
    {
        for (const char* operation :
             {"HealthCheck::registerManagementHandler", "HealthCheck::unregisterManagementHandler",
              "ScalarMetric::setRangeChangeHandler", "ScalarMetric::clearRangeChangeHandler",
              "ScalarMetric::remove", "SimpleMetric::remove", "HealthCheck::destroy", "VigilSnmp::cleanup"}) {
            const std::string line = "___ERROR___ " + std::string(operation) + " was called from inside";
            EXPECT_EQ(log.count(line), times) << operation;
        }
    }

    void expectEverythingToWorkAsBefore()
    {
        managementHandler.onCall = [] {};
        rangeHandler.onAsked = [](auto&) {};
        EXPECT_EQ(validate(warningCell, "1:2"), "answer 0 to " + set(warningCell, "1:2"));
        EXPECT_EQ(validate(cell(5, 1, checkRow), 2), "answer 0 to " + set(cell(5, 1, checkRow), 2));
        check->update();
        std::vector<vigil::Result> results;
        check->getResults(results);
        EXPECT_EQ(results.size(), 2u);
        EXPECT_EQ(service.connections(), 1);
    }

    support::Recorder recorder;
    support::RecordingManagementHandler managementHandler{recorder};
    support::RecordingRangeHandler rangeHandler{recorder};
    const CheckPointer check = makeCheck("app", "hc");
    vigil::ScalarMetric* const scalar = check->createScalarMetric("cpu");
    vigil::SimpleMetric* const simple = check->createSimpleMetric("db");
};

TEST_F(CallbackRules, ForbiddenCallsInAManagementFunctionAreRefusedAndLogged)
{
    for (const int column : {1, 2, 3, 4})
        commit(cell(5, column, checkRow), 2);
    commit(cell(5, 5, checkRow), "");
    EXPECT_EQ(recorder.lines().size(), 5u);
    expectEachCallToBeRefused(5);
    expectEverythingToWorkAsBefore();
}

TEST_F(CallbackRules, ForbiddenCallsInAcceptRangeChangeAreRefusedAndLogged)
{
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 0 to " + set(warningCell, "10:20"));
    expectEachCallToBeRefused(1);
    expectEverythingToWorkAsBefore();
}

TEST_F(CallbackRules, ForbiddenCallsInRangeChangedAreRefusedAndLogged)
{
    commit(warningCell, "10:20");
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"cpu changed warning"}));
    EXPECT_EQ(scalar->getWarningRange().toString(), "10:20");
    expectEachCallToBeRefused(1);
    expectEverythingToWorkAsBefore();
}

// Once the check took the new metric while its row stayed with the old one.
TEST_F(CallbackRules, CreatingAMetricInsideACallbackIsRefusedAndChangesNothing)
{
    rangeHandler.onChanged = [this](auto&) {
        EXPECT_EQ(check->createScalarMetric("cpu"), nullptr);
        EXPECT_EQ(check->createSimpleMetric("new"), nullptr);
    };
    commit(warningCell, "10:20");
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_EQ(log.count("___ERROR___ HealthCheck::createScalarMetric was called from inside a callback"), 1);
    EXPECT_EQ(log.count("___ERROR___ HealthCheck::createSimpleMetric was called from inside a callback"), 1);
    scalar->setValue(5);
    check->update();
    std::vector<vigil::Result> results;
    check->getResults(results);
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].getSummary(), "out of warning range: cpu is 5.");
}

} // namespace
