// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/RangeCallbackAdapter.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <vigil/Metric.h>
#include <vigil/Oid.h>
#include <vigil/Range.h>

#include "snmp/RemoteMetricObserver.h"
#include "snmp/SnmpMetricTable.h"
#include "support/Publications.h"
#include "support/QtMessages.h"

using support::cell;
using support::QtMessages;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;
using vigil::Range;

namespace {

std::string nameOf(RangeKind kind)
{
    return kind == RangeKind::Warning ? "warning " : "critical ";
}

/// Records all calls.
class RecordingObserver : public RemoteMetricObserver
{
public:
    vigil::Metric& getMetric() override { throw std::logic_error("the adapter has no use for the metric"); }

    bool checkRangeChange(RangeKind kind, const Range& range) override
    {
        calls.push_back("check " + nameOf(kind) + range.toString());
        return accepts;
    }

    void applyRange(RangeKind kind, const Range& range) override
    {
        calls.push_back("apply " + nameOf(kind) + range.toString());
    }

    void onRangeChanged(RangeKind kind) override
    {
        calls.push_back("changed " + nameOf(kind) + std::to_string(static_cast<int>(kind)));
    }

    bool accepts = true;
    std::vector<std::string> calls;
};

Oid metricCell(int column)
{
    return Oid::fromStdString("1.3.6.1.4.1.32473." + cell(2, column, {"app", "hc", "m"}));
}

class RangeCallbackAdapterTest : public testing::Test
{
protected:
    std::vector<std::string> debugTexts() const
    {
        std::vector<std::string> texts;
        for (const QString& text : messages.all())
            texts.push_back(text.toStdString());
        return texts;
    }

    unsigned int validate(int column, const std::string& text)
    {
        return adapter.callbackValidateValue(metricCell(column), text);
    }

    QtMessages messages;
    RecordingObserver observer;
    SnmpMetricTable table{"app", "hc"};
    RangeCallbackAdapter adapter{&observer, &table};
};

TEST_F(RangeCallbackAdapterTest, AnAcceptedWarningRangeIsValidatedWith0AndAppliedAtTheCommit)
{
    EXPECT_EQ(validate(3, "10:20"), 0u);
    EXPECT_THAT(observer.calls, ElementsAreArray({"check warning 10:20"}));
    adapter.callbackValueChanged(metricCell(3), std::string("10:20"));
    EXPECT_THAT(observer.calls,
                ElementsAreArray({"check warning 10:20", "apply warning 10:20", "changed warning 0"}));
    EXPECT_THAT(debugTexts(), IsEmpty());
}

TEST_F(RangeCallbackAdapterTest, Column4IsTheCriticalRange)
{
    EXPECT_EQ(validate(4, "@10:20"), 0u);
    adapter.callbackValueChanged(metricCell(4), std::string("@10:20"));
    EXPECT_THAT(observer.calls,
                ElementsAreArray({"check critical @10:20", "apply critical @10:20", "changed critical 1"}));
}

TEST_F(RangeCallbackAdapterTest, ARangeRefusedByTheObserverIsLogged)
{
    observer.accepts = false;
    EXPECT_EQ(validate(3, "10:20"), 1u);
    EXPECT_THAT(observer.calls, ElementsAreArray({"check warning 10:20"}));
    EXPECT_THAT(debugTexts(),
                ElementsAreArray({"Client invalidated requested range change. Ignore SET request.\n"}));
}

TEST_F(RangeCallbackAdapterTest, MalformedTextIsRefusedAndLoggedWithoutAskingTheObserver)
{
    EXPECT_EQ(validate(4, "abc"), 1u);
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(
        debugTexts(),
        ElementsAreArray({"Invalid range string [ abc ] from remote SNMP manager. Ignore SET request."}));
}

TEST_F(RangeCallbackAdapterTest, ATextCannotForgeLinesOfTheDebugOutput)
{
    EXPECT_EQ(validate(4, "x\n\x1b[2J"), 1u);
    EXPECT_THAT(
        debugTexts(),
        ElementsAreArray(
            {"Invalid range string [ x\\n\\u001b[2J ] from remote SNMP manager. Ignore SET request."}));
}

TEST_F(RangeCallbackAdapterTest, ATextForAnyOtherCellIsRefusedSilently)
{
    for (const int column : {2, 5, 1, 6})
        EXPECT_EQ(validate(column, "10:20"), 1u) << column;
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(debugTexts(), IsEmpty());
}

TEST_F(RangeCallbackAdapterTest, TheTextIsCheckedBeforeTheCell)
{
    EXPECT_EQ(validate(2, "\xC3\xA4"), 1u);
    adapter.callbackValueChanged(metricCell(2), std::string("abc"));
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(
        debugTexts(),
        ElementsAreArray({"Invalid range string [ \xC3\xA4 ] from remote SNMP manager. Ignore SET request.",
                          "RangeCallbackAdapter::callbackValueChanged: Bad range format string."}));
}

TEST_F(RangeCallbackAdapterTest, TheEmptyTextAndOffAreRanges)
{
    EXPECT_EQ(validate(3, ""), 0u);
    EXPECT_EQ(validate(4, "off"), 0u);
    EXPECT_THAT(observer.calls, ElementsAreArray({"check warning ", "check critical off"}));
    EXPECT_THAT(debugTexts(), IsEmpty());
}

TEST_F(RangeCallbackAdapterTest, TheSameColumnOfAnotherTableIsNotARange)
{
    const Oid result = Oid::fromStdString("1.3.6.1.4.1.32473." + cell(3, 3, {"app", "hc", "m"}));
    EXPECT_EQ(adapter.callbackValidateValue(result, std::string("10:20")), 1u);
    adapter.callbackValueChanged(result, std::string("10:20"));
    EXPECT_THAT(observer.calls, IsEmpty());
}

TEST_F(RangeCallbackAdapterTest, ACommittedMalformedTextIsLoggedAndChangesNothing)
{
    adapter.callbackValueChanged(metricCell(3), std::string("abc"));
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(debugTexts(),
                ElementsAreArray({"RangeCallbackAdapter::callbackValueChanged: Bad range format string."}));
}

TEST_F(RangeCallbackAdapterTest, ACommittedTextForAnyOtherCellIsIgnoredSilently)
{
    adapter.callbackValueChanged(metricCell(2), std::string("10:20"));
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(debugTexts(), IsEmpty());
}

TEST_F(RangeCallbackAdapterTest, TheCommitDoesNotAskForConsentAgain)
{
    observer.accepts = false;
    adapter.callbackValueChanged(metricCell(3), std::string("10:20"));
    EXPECT_THAT(observer.calls, ElementsAreArray({"apply warning 10:20", "changed warning 0"}));
}

TEST_F(RangeCallbackAdapterTest, IntegersAreAcceptedAndIgnoredOnEveryCell)
{
    for (const int column : {2, 3, 4, 5}) {
        EXPECT_EQ(adapter.callbackValidateValue(metricCell(column), 5), 0u);
        adapter.callbackValueChanged(metricCell(column), 5);
    }
    EXPECT_THAT(observer.calls, IsEmpty());
    EXPECT_THAT(debugTexts(), IsEmpty());
}

} // namespace
