// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The functions of handles, and what they do to handles while they run.

#include <vigil/raii.h>

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "base/wire/Protocol.h"
#include "support/Deadline.h"
#include "support/LibraryTest.h"
#include "support/Publications.h"
#include "support/ScriptedCallbacks.h"
#include "support/ShownCells.h"

using support::cell;
using support::set;
using support::unset;
using testing::ElementsAre;
using testing::IsEmpty;
using vigil::CheckHandle;
using vigil::Range;
using vigil::RangeKind;
using vigil::ScalarHandle;
using vigil::SimpleHandle;

namespace {

class HandleCallbackTest : public support::LibraryTest
{
protected:
    HandleCallbackTest()
    {
        start();
        check = CheckHandle("app", "hc");
        cpu = ScalarHandle(check, "cpu");
    }

    void trigger(int function) { commit(cell(5, function, {"app", "hc"}), 2); }

    bool waitForWithdrawal(const std::string& oid)
    {
        const std::string line = unset(oid);
        return service.waitForFrame([&](const auto& frame) { return support::describe(frame) == line; });
    }

    const std::string warningCell = cell(2, 3, {"app", "hc", "cpu"});
    support::Recorder recorder;
    CheckHandle keeper{"app", "keeper"}; // keeps the library running
    CheckHandle check;
    ScalarHandle cpu;
};

TEST_F(HandleCallbackTest, FunctionsAreCalledByTheirNumbers)
{
    for (const int number : {1, 4, 5})
        check.setFunction(number, [=] { recorder.add("function " + std::to_string(number)); });
    trigger(1);
    trigger(2);
    trigger(4);
    commit(cell(5, 5, {"app", "hc"}), "");
    EXPECT_THAT(recorder.lines(), ElementsAre("function 1", "function 4", "function 5"));
    check.setFunction(1, nullptr);
    trigger(1);
    EXPECT_EQ(recorder.lines().size(), 3u);
}

TEST_F(HandleCallbackTest, AChangedRangeIsPublishedBeforeTheFunctionHearsOfIt)
{
    cpu.setRangeHandler([](RangeKind, const Range& range) { return range.getUpperBound() <= 100; },
                        [&](RangeKind kind, const Range& range) {
                            recorder.add((kind == RangeKind::Warning ? "warning " : "critical ") +
                                         range.toString());
                        });
    EXPECT_EQ(validate(warningCell, "10:200"), "answer 1 to " + set(warningCell, "10:200"));
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 0 to " + set(warningCell, "10:20"));
    publications();
    commit(warningCell, "10:20");
    EXPECT_THAT(publications(), testing::Contains(set(warningCell, "10:20")));
    EXPECT_THAT(recorder.lines(), ElementsAre("warning 10:20"));
    EXPECT_EQ(cpu.getWarningRange().toString(), "10:20");
}

TEST_F(HandleCallbackTest, AClearedRangeHandlerRefuses)
{
    cpu.setRangeHandler([](RangeKind, const Range&) { return true; });
    cpu.clearRangeHandler();
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + set(warningCell, "10:20"));
}

TEST_F(HandleCallbackTest, AFunctionThatThrowsIsLoggedAndTheNextOneRuns)
{
    check.setFunction(1, [] { throw std::runtime_error("broken"); });
    cpu.setRangeHandler([](RangeKind, const Range&) -> bool { throw 5; });
    trigger(1);
    EXPECT_EQ(log.count("threw: broken"), 1);
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 5 to " + set(warningCell, "10:20"));
    check.setFunction(2, [&] { recorder.add("still here"); });
    trigger(2);
    EXPECT_THAT(recorder.lines(), ElementsAre("still here"));
}

TEST_F(HandleCallbackTest, AFunctionMayUpdateItsCheckAndSetItsMetrics)
{
    check.setFunction(1, [&] {
        cpu.setValue(9);
        cpu.setUnit("%");
        check.update();
        recorder.add(check.getSummary() + check.getResults().at(0).getSummary());
    });
    trigger(1);
    EXPECT_THAT(recorder.lines(), ElementsAre("cpu is 9%."));
}

// It went out before the queued one, and managers read the older value.
TEST_F(HandleCallbackTest, AnUpdateInAFunctionFollowsEarlierOnesOfOtherThreads)
{
    std::promise<void> isInside;
    std::promise<void> isUpdated;
    check.setFunction(1, [&] {
        isInside.set_value();
        isUpdated.get_future().wait_for(std::chrono::milliseconds(support::deadlineMs));
        cpu.setValue(2);
        check.update();
    });
    service.send(base::SnmpIntType, support::encodedInt(cell(5, 1, {"app", "hc"}), 2), base::PlainValue);
    isInside.get_future().wait();
    cpu.setValue(1);
    check.update();
    isUpdated.set_value();
    settle();
    const support::ShownCells shown(service.frames());
    const std::string result = cell(3, 2, {"app", "hc", "cpu"});
    EXPECT_EQ(shown.cells().at(result), set(result, "cpu is 2."));
}

TEST_F(HandleCallbackTest, AFunctionMustNotCreateOrSetHandlers)
{
    check.setFunction(1, [&] {
        EXPECT_THROW(ScalarHandle(check, "new"), std::logic_error);
        EXPECT_THROW(SimpleHandle(check, "new"), std::logic_error);
        EXPECT_THROW(check.setFunction(2, [] {}), std::logic_error);
        EXPECT_THROW(cpu.setRangeHandler(nullptr), std::logic_error);
        EXPECT_THROW(cpu.clearRangeHandler(), std::logic_error);
        EXPECT_THROW(vigil::ConnectionWatch([](bool) {}), std::logic_error);
        recorder.add("all refused");
    });
    trigger(1);
    EXPECT_THAT(recorder.lines(), ElementsAre("all refused"));
    EXPECT_EQ(log.count("___ERROR___"), 0);
}

TEST_F(HandleCallbackTest, AFunctionMayMoveTheHandles)
{
    CheckHandle otherCheck;
    ScalarHandle otherCpu;
    check.setFunction(1, [&] {
        otherCheck = std::move(check);
        otherCpu = std::move(cpu);
    });
    trigger(1);
    EXPECT_FALSE(check);
    otherCheck.setFunction(2, [&] { recorder.add(otherCpu.getName()); });
    trigger(2);
    EXPECT_THAT(recorder.lines(), ElementsAre("cpu"));
}

TEST_F(HandleCallbackTest, AFunctionMayEndItsOwnMetric)
{
    cpu.setRangeHandler([&](RangeKind, const Range&) {
        recorder.add("asked");
        cpu.reset();
        return true;
    });
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 0 to " + set(warningCell, "10:20"));
    EXPECT_TRUE(waitForWithdrawal(warningCell));
    validate(warningCell, "10:20");
    EXPECT_THAT(recorder.lines(), ElementsAre("asked"));
    EXPECT_EQ(log.count("___ERROR___"), 0);
}

TEST_F(HandleCallbackTest, AFunctionMayEndItsOwnCheck)
{
    check.setFunction(1, [&] {
        recorder.add("called");
        check.reset();
    });
    trigger(1);
    EXPECT_TRUE(waitForWithdrawal(cell(1, 3, {"app", "hc"})));
    trigger(1);
    EXPECT_THAT(recorder.lines(), ElementsAre("called"));
}

// The helper thread ends the library's threads, one of which is running the function.
TEST_F(HandleCallbackTest, AFunctionMayEndTheLastCheckOfTheProcess)
{
    keeper.reset();
    cpu.reset();
    check.setFunction(1, [&] { check.reset(); });
    service.send(base::SnmpIntType, support::encodedInt(cell(5, 1, {"app", "hc"}), 2), base::PlainValue);
    EXPECT_TRUE(service.waitForDisconnections(1));
}

/// Blocks a function until the test lets it go on.
class Gate
{
public:
    void pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_isReached = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOpen; });
    }

    bool waitUntilReached()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::milliseconds(support::deadlineMs),
                                  [this] { return m_isReached; });
    }

    void open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOpen = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isReached = false;
    bool m_isOpen = false;
};

TEST_F(HandleCallbackTest, TheEndOfACheckWaitsForItsFunction)
{
    Gate gate;
    check.setFunction(1, [&] {
        gate.pass();
        cpu.setValue(3);
        recorder.add("done");
    });
    service.send(base::SnmpIntType, support::encodedInt(cell(5, 1, {"app", "hc"}), 2), base::PlainValue);
    ASSERT_TRUE(gate.waitUntilReached());
    std::thread ender([&] {
        check.reset();
        recorder.add("ended");
    });
    gate.open();
    ender.join();
    EXPECT_THAT(recorder.lines(), ElementsAre("done", "ended"));
}

TEST_F(HandleCallbackTest, AReplacedFunctionIsOverAndItsCapturesAreDestroyed)
{
    const auto captured = std::make_shared<int>(1);
    Gate gate;
    check.setFunction(1, [&gate, captured, this] {
        gate.pass();
        recorder.add("old done");
    });
    service.send(base::SnmpIntType, support::encodedInt(cell(5, 1, {"app", "hc"}), 2), base::PlainValue);
    ASSERT_TRUE(gate.waitUntilReached());
    std::thread setter([&] {
        check.setFunction(1, [] {});
        recorder.add("replaced");
    });
    gate.open();
    setter.join();
    EXPECT_THAT(recorder.lines(), ElementsAre("old done", "replaced"));
    EXPECT_EQ(captured.use_count(), 1);
}

// The handle inside the function ends on the thread that replaces the function.
TEST_F(HandleCallbackTest, AFunctionMayOwnAHandleOfItsCheck)
{
    auto owned = std::make_shared<ScalarHandle>(check, "owned");
    check.setFunction(1, [owned] { owned->setValue(1); });
    cpu.setRangeHandler([owned](RangeKind, const Range&) { return false; });
    owned.reset();
    trigger(1);
    cpu.clearRangeHandler();
    check.setFunction(1, nullptr);
    check.update();
    EXPECT_EQ(check.getResults().size(), 1u);
}

} // namespace
