// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/ScalarMetric.h>

#include <vigil/HealthCheck.h>

#include "base/wire/Protocol.h"
#include "snmp/RemoteMetricObserver.h"
#include "support/CheckPointer.h"
#include "support/LibraryTest.h"
#include "support/QtMessages.h"
#include "support/RecordingRangeHandler.h"

#include <atomic>
#include <limits>
#include <thread>

using support::cell;
using support::CheckPointer;
using support::makeCheck;
using support::QtMessages;
using support::set;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::HealthStatus;
using vigil::Range;
using vigil::Result;

namespace {

class ScalarMetricTest : public support::LibraryTest
{
protected:
    const std::vector<std::string> metricRow = {"app", "hc", "cpu"};
    const std::string warningCell = cell(2, 3, metricRow);
    const std::string criticalCell = cell(2, 4, metricRow);

    ~ScalarMetricTest() override { metric->remove(); }

    Result evaluated() const
    {
        check->update();
        std::vector<Result> results;
        check->getResults(results);
        return results.at(0);
    }

    Result evaluatedWith(double value) const
    {
        metric->setValue(value);
        return evaluated();
    }

    support::Recorder recorder;
    support::RecordingRangeHandler handler{recorder};
    const CheckPointer check = makeCheck("app", "hc");
    vigil::ScalarMetric* const metric = check->createScalarMetric("cpu");
};

// --- Evaluation

TEST_F(ScalarMetricTest, ANewMetricIsOkWithValue0AndRangesOff)
{
    EXPECT_EQ(metric->getValue(), 0);
    EXPECT_EQ(metric->getUnit(), "");
    EXPECT_EQ(metric->getWarningRange().toString(), "off");
    EXPECT_EQ(metric->getCriticalRange().toString(), "off");
    const Result result = evaluated();
    EXPECT_EQ(result.getName(), "cpu");
    EXPECT_EQ(result.getStatus(), HealthStatus::Ok);
    EXPECT_EQ(result.getSummary(), "cpu is 0.");
}

TEST_F(ScalarMetricTest, PerformanceDataOfANewMetricHasRangesOff)
{
    settle();
    publications();
    check->update();
    std::vector<std::string> lines = publications();
    ASSERT_EQ(lines.size(), 9u);
    lines.erase(lines.begin(), lines.begin() + 4);
    EXPECT_THAT(lines, ElementsAreArray({set(cell(4, 1, metricRow), "cpu"), set(cell(4, 2, metricRow), "0"),
                                         set(cell(4, 3, metricRow), ""), set(cell(4, 4, metricRow), "off"),
                                         set(cell(4, 5, metricRow), "off")}));
}

TEST_F(ScalarMetricTest, TheCriticalRangeIsCheckedFirst)
{
    metric->setUnit("%");
    metric->setCriticalRange(Range::CreateThresholdAbove(95));
    metric->setWarningRange(Range::CreateThresholdAbove(80));
    EXPECT_EQ(evaluatedWith(50).getStatus(), HealthStatus::Ok);
    EXPECT_EQ(evaluated().getSummary(), "cpu is 50%.");
    EXPECT_EQ(evaluatedWith(80).getStatus(), HealthStatus::Ok);
    EXPECT_EQ(evaluatedWith(85).getStatus(), HealthStatus::Warning);
    EXPECT_EQ(evaluated().getSummary(), "out of warning range: cpu is 85%.");
    EXPECT_EQ(evaluatedWith(97.5).getStatus(), HealthStatus::Critical);
    EXPECT_EQ(evaluated().getSummary(), "out of critical range: cpu is 97.5%.");
}

TEST_F(ScalarMetricTest, WithOnlyACriticalRangeThereIsNoWarning)
{
    metric->setCriticalRange(Range::CreateRange(10, 20));
    EXPECT_EQ(evaluatedWith(9.99).getStatus(), HealthStatus::Critical);
    EXPECT_EQ(evaluatedWith(10).getStatus(), HealthStatus::Ok);
    EXPECT_EQ(evaluatedWith(20).getStatus(), HealthStatus::Ok);
    EXPECT_EQ(evaluatedWith(20.01).getStatus(), HealthStatus::Critical);
}

TEST_F(ScalarMetricTest, ANarrowerCriticalRangeWinsOverTheWarningRange)
{
    metric->setCriticalRange(Range::CreateThresholdAbove(10));
    metric->setWarningRange(Range::CreateThresholdAbove(80));
    EXPECT_EQ(evaluatedWith(50).getStatus(), HealthStatus::Critical);
    EXPECT_EQ(evaluatedWith(90).getStatus(), HealthStatus::Critical);
}

TEST_F(ScalarMetricTest, AnUnsetRangeMatchesEverything)
{
    metric->setCriticalRange(Range());
    metric->setWarningRange(Range());
    EXPECT_EQ(evaluatedWith(-1e300).getStatus(), HealthStatus::Ok);
}

TEST_F(ScalarMetricTest, AMissingValueIsJudgedAs0)
{
    metric->setCriticalRange(Range::CreateThresholdBelow(1));
    EXPECT_EQ(evaluated().getStatus(), HealthStatus::Critical);
    EXPECT_EQ(evaluated().getSummary(), "out of critical range: cpu is 0.");
}

TEST_F(ScalarMetricTest, NaNIsInsideARangeAndInfinityOutside)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    metric->setCriticalRange(Range::CreateRange(10, 20));
    EXPECT_EQ(evaluatedWith(notANumber).getStatus(), HealthStatus::Ok);
    EXPECT_EQ(evaluated().getSummary(), "cpu is nan.");
    EXPECT_EQ(evaluatedWith(infinity).getSummary(), "out of critical range: cpu is inf.");
    EXPECT_EQ(evaluatedWith(-infinity).getSummary(), "out of critical range: cpu is -inf.");
    metric->setCriticalRange(Range::CreateInverseRange(10, 20));
    EXPECT_EQ(evaluatedWith(notANumber).getStatus(), HealthStatus::Critical);
}

TEST_F(ScalarMetricTest, ValuesPrintWithSixSignificantDigits)
{
    EXPECT_EQ(evaluatedWith(1234567).getSummary(), "cpu is 1.23457e+06.");
    EXPECT_EQ(evaluatedWith(0.1).getSummary(), "cpu is 0.1.");
    EXPECT_EQ(evaluatedWith(-2).getSummary(), "cpu is -2.");
}

TEST_F(ScalarMetricTest, PlaceholdersInNameAndUnitAreReplacedInTheirOrder)
{
    metric->setUnit("{name}{value}");
    EXPECT_EQ(evaluated().getSummary(), "cpu is 0{name}{value}.");
    vigil::ScalarMetric* odd = check->createScalarMetric("a {value}{unit}{other}");
    odd->setUnit(" \xC2\xB5s");
    EXPECT_EQ(evaluated().getSummary(), "a 0 \xC2\xB5s{other} is 0 \xC2\xB5s.");
    odd->remove();
}

TEST_F(ScalarMetricTest, ARangeInTheHandsOfTheApplicationStaysWhole)
{
    const Range& before = metric->getWarningRange();
    const Range& criticalBefore = metric->getCriticalRange();
    auto& observer = dynamic_cast<RemoteMetricObserver&>(*metric);
    observer.applyRange(RangeKind::Warning, Range::CreateInverseRange(3, 4));
    observer.applyRange(RangeKind::Critical, Range::CreateRange(5, 6));
    EXPECT_EQ(before.toString(), "off");
    EXPECT_EQ(criticalBefore.toString(), "off");
    EXPECT_EQ(metric->getWarningRange().toString(), "@3:4");
    EXPECT_EQ(metric->getCriticalRange().toString(), "5:6");
}

TEST_F(ScalarMetricTest, EqualRangesAreOneObject)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Range& range :
         {Range::CreateRange(1, 2), Range(), Range::CreateRange(nan, 2), Range::CreateNoLimit()}) {
        metric->setWarningRange(range);
        const Range* first = &metric->getWarningRange();
        metric->setWarningRange(Range::CreateInverseRange(1, 2));
        EXPECT_NE(&metric->getWarningRange(), first);
        metric->setWarningRange(range);
        EXPECT_EQ(&metric->getWarningRange(), first);
        EXPECT_EQ(metric->getWarningRange().toString(), range.toString());
    }
}

TEST_F(ScalarMetricTest, ReadersSeeWholeRangesWhileAManagerReplacesThem)
{
    auto& observer = dynamic_cast<RemoteMetricObserver&>(*metric);
    std::atomic<bool> isDone{false};
    std::thread manager([&] {
        for (int i = 0; i < 100000; ++i)
            observer.applyRange(RangeKind::Warning,
                                i % 2 == 0 ? Range::CreateRange(1, 2) : Range::CreateInverseRange(3, 4));
        isDone = true;
    });
    int torn = 0;
    while (!isDone) {
        const Range& range = metric->getWarningRange();
        const double lower = range.getLowerBound();
        if (range.isEnabled() && (lower != (range.isInverse() ? 3 : 1) || range.getUpperBound() != lower + 1))
            ++torn;
    }
    manager.join();
    EXPECT_EQ(torn, 0);
}

TEST_F(ScalarMetricTest, ClearingTheHandlerOfAnOlderMetricSwitchesOffItsSuccessors)
{
    vigil::ScalarMetric* newer = check->createScalarMetric("cpu");
    newer->setRangeChangeHandler(&handler);
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 0 to " + warningCell + " = \"10:20\"");
    metric->clearRangeChangeHandler();
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + warningCell + " = \"10:20\"");
    newer->remove();
}

TEST_F(ScalarMetricTest, CreationWritesADebugLine)
{
    const QtMessages messages;
    vigil::ScalarMetric* other = check->createScalarMetric("other");
    EXPECT_TRUE(messages.all().contains(QStringLiteral("ScalarMetricImpl::ScalarMetricImpl Ctor\n")));
    other->remove();
}

TEST_F(ScalarMetricTest, ValueAndPerformanceSwitchAreNotPublishedAtOnce)
{
    settle();
    publications();
    metric->setValue(5);
    metric->setPerformanceDataEnabled(false);
    EXPECT_THAT(publications(), IsEmpty());
}

// --- The manager's changes

TEST_F(ScalarMetricTest, WithoutAHandlerEveryRangeChangeIsRefused)
{
    settle();
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + set(warningCell, "10:20"));
    auto& observer = dynamic_cast<RemoteMetricObserver&>(*metric);
    EXPECT_FALSE(observer.checkRangeChange(RangeKind::Warning, Range::CreateNoLimit()));
    observer.onRangeChanged(RangeKind::Warning);
    EXPECT_EQ(observer.getMetric().getName(), "cpu");
}

TEST_F(ScalarMetricTest, AHandlerMakesTheRowWritableAndColumn5ShowsIt)
{
    settle();
    publications();
    metric->setRangeChangeHandler(&handler);
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 1)}));
    metric->clearRangeChangeHandler();
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 0)}));
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + set(warningCell, "10:20"));
    EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST_F(ScalarMetricTest, ASecondHandlerReplacesTheFirst)
{
    settle();
    support::Recorder secondRecorder;
    support::RecordingRangeHandler second(secondRecorder);
    metric->setRangeChangeHandler(&handler);
    metric->setRangeChangeHandler(&second);
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 0 to " + set(warningCell, "10:20"));
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_THAT(secondRecorder.lines(), ElementsAreArray({"cpu accepts warning 10:20"}));
    metric->clearRangeChangeHandler();
}

TEST_F(ScalarMetricTest, AMetricWithoutItsCheckCanStillClearItsHandler)
{
    CheckPointer otherCheck = makeCheck("app", "other");
    vigil::ScalarMetric* survivor = otherCheck->createScalarMetric("survivor");
    survivor->setRangeChangeHandler(&handler);
    otherCheck.reset();
    auto& observer = dynamic_cast<RemoteMetricObserver&>(*survivor);
    EXPECT_TRUE(observer.checkRangeChange(RangeKind::Warning, Range::CreateRange(10, 20)));
    survivor->clearRangeChangeHandler();
    EXPECT_FALSE(observer.checkRangeChange(RangeKind::Warning, Range::CreateRange(10, 20)));
    observer.onRangeChanged(RangeKind::Warning);
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"survivor accepts warning 10:20"}));
    survivor->remove();
}

TEST_F(ScalarMetricTest, ANullHandlerRefusesEveryChangeAlthoughColumn5Shows1)
{
    settle();
    publications();
    metric->setRangeChangeHandler(nullptr);
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 1)}));
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + set(warningCell, "10:20"));
    commit(warningCell, "10:20"); // the validation stops this for a real manager
    EXPECT_EQ(metric->getWarningRange().toString(), "10:20");
}

TEST_F(ScalarMetricTest, ACommittedRangeIsAppliedButNotPublished)
{
    settle();
    metric->setRangeChangeHandler(&handler);
    metric->setValue(30);
    publications();
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 0 to " + set(warningCell, "10:20"));
    EXPECT_EQ(metric->getWarningRange().toString(), "off");
    commit(warningCell, "10:20");
    EXPECT_EQ(metric->getWarningRange().toString(), "10:20");
    EXPECT_EQ(metric->getCriticalRange().toString(), "off");
    commit(criticalCell, "~:95");
    EXPECT_EQ(metric->getCriticalRange().toString(), "~:95");
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"cpu accepts warning 10:20", "cpu changed warning",
                                                    "cpu changed critical"}));
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_EQ(evaluated().getStatus(), HealthStatus::Warning);
}

TEST_F(ScalarMetricTest, ARangeCanBePublishedInsideRangeChanged)
{
    settle();
    handler.onChanged = [](vigil::ScalarMetric& changed) {
        changed.setWarningRange(changed.getWarningRange());
    };
    metric->setRangeChangeHandler(&handler);
    publications();
    commit(warningCell, "10:20");
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 2, metricRow), ""), set(warningCell, "10:20"),
                                                  set(criticalCell, "off")}));
}

TEST_F(ScalarMetricTest, ARefusedRangeChangesNothing)
{
    settle();
    handler.accepts = false;
    metric->setRangeChangeHandler(&handler);
    const QtMessages messages;
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + set(warningCell, "10:20"));
    EXPECT_EQ(validate(criticalCell, "abc"), "answer 1 to " + set(criticalCell, "abc"));
    EXPECT_EQ(metric->getWarningRange().toString(), "off");
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"cpu accepts warning 10:20"}));
    EXPECT_TRUE(messages.all().contains(
        QStringLiteral("Client invalidated requested range change. Ignore SET request.\n")));
}

TEST_F(ScalarMetricTest, AMetricCreatedAgainUnderTheSameNameIsNotWritable)
{
    settle();
    metric->setRangeChangeHandler(&handler);
    vigil::ScalarMetric* newer = check->createScalarMetric("cpu");
    EXPECT_EQ(validate(warningCell, "10:20"), "answer 1 to " + set(warningCell, "10:20"));
    commit(warningCell, "10:20");
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_EQ(metric->getWarningRange().toString(), "off");
    newer->remove();
}

TEST_F(ScalarMetricTest, TheHandlerOfARemovedMetricIsNotCalled)
{
    settle();
    vigil::ScalarMetric* other = check->createScalarMetric("other");
    other->setRangeChangeHandler(&handler);
    other->remove();
    const std::string otherCell = cell(2, 3, {"app", "hc", "other"});
    EXPECT_EQ(validate(otherCell, "10:20"), "answer 1 to " + set(otherCell, "10:20"));
    EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST_F(ScalarMetricTest, IntegerSetsOnItsRowAreAcceptedAndIgnored)
{
    settle();
    metric->setRangeChangeHandler(&handler);
    EXPECT_EQ(validate(warningCell, 5), "answer 0 to " + set(warningCell, 5));
    commit(warningCell, 5);
    EXPECT_EQ(metric->getWarningRange().toString(), "off");
    EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST_F(ScalarMetricTest, AManagerCanChangeRangesDuringUpdates)
{
    settle();
    handler.onChanged = [](vigil::ScalarMetric& changed) {
        changed.setWarningRange(changed.getWarningRange());
    };
    metric->setRangeChangeHandler(&handler);
    constexpr int count = 200;
    for (int i = 0; i < count; ++i) {
        service.send(base::SnmpStringType, support::encodedString(warningCell, "~:" + std::to_string(i)),
                     base::PlainValue);
        metric->setValue(i);
        metric->setUnit("%");
        check->update();
    }
    commit(warningCell, "10:20");
    EXPECT_EQ(recorder.lines().size(), static_cast<std::size_t>(count) + 1);
    EXPECT_EQ(metric->getWarningRange().toString(), "10:20");
}

} // namespace
