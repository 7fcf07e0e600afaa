// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/MetricStore.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vigil/Range.h>

#include "health/InternalMetric.h"

using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::HealthStatus;
using vigil::Range;
using vigil::Result;

namespace {

/// A metric with results chosen by the test.
class FakeMetric : public InternalMetric
{
public:
    explicit FakeMetric(std::string name) : m_name(std::move(name)) {}
    virtual ~FakeMetric() = default;

    std::string getName() const override { return m_name; }
    std::string getUnit() const override { return std::string(); }
    const Range& getWarningRange() const override { return m_range; }
    const Range& getCriticalRange() const override { return m_range; }
    void remove() override {}

    bool evaluate(Result& out) override
    {
        out = Result(m_name, HealthStatus::Ok, "fine");
        return hasResult;
    }

    bool getPerformanceData(PerformanceData& out) override
    {
        ++askedForNumbers;
        out.setLabel(m_name);
        return hasNumbers;
    }

    bool hasResult = true;
    bool hasNumbers = true;
    int askedForNumbers = 0;

private:
    std::string m_name;
    Range m_range;
};

class MetricStoreTest : public testing::Test
{
protected:
    std::shared_ptr<FakeMetric> add(const std::string& name)
    {
        auto metric = std::make_shared<FakeMetric>(name);
        store.addMetric(name, metric);
        return metric;
    }

    /// The names of the results, each with the label of its performance data if it has any.
    std::vector<std::string> evaluated()
    {
        store.evaluateAll();
        std::vector<std::string> lines;
        for (const ResultEntry& entry : store.results()) {
            const std::string numbers =
                entry.perfData ? " with numbers of " + entry.perfData->getLabel() : "";
            lines.push_back(entry.result.getName() + numbers);
        }
        return lines;
    }

    MetricStore store{nullptr};
};

TEST_F(MetricStoreTest, EvaluatesInTheOrderOfTheNames)
{
    const auto b = add("b");
    const auto a = add("a");
    EXPECT_THAT(evaluated(), ElementsAreArray({"a with numbers of a", "b with numbers of b"}));
}

TEST_F(MetricStoreTest, AMetricWithoutPerformanceDataHasAResult)
{
    const auto metric = add("a");
    metric->hasNumbers = false;
    EXPECT_THAT(evaluated(), ElementsAreArray({"a"}));
}

TEST_F(MetricStoreTest, AMetricWithoutAResultIsNotAskedForPerformanceData)
{
    const auto silent = add("a");
    silent->hasResult = false;
    const auto other = add("b");
    EXPECT_THAT(evaluated(), ElementsAreArray({"b with numbers of b"}));
    EXPECT_EQ(silent->askedForNumbers, 0);
}

TEST_F(MetricStoreTest, ADestroyedMetricIsSkipped)
{
    auto metric = add("a");
    const auto other = add("b");
    metric.reset();
    EXPECT_THAT(evaluated(), ElementsAreArray({"b with numbers of b"}));
}

TEST_F(MetricStoreTest, DoesNotOwnItsMetrics)
{
    const auto metric = add("a");
    evaluated();
    EXPECT_EQ(metric.use_count(), 1);
}

TEST_F(MetricStoreTest, EachEvaluationReplacesTheEarlierResults)
{
    const auto metric = add("a");
    evaluated();
    EXPECT_THAT(evaluated(), ElementsAreArray({"a with numbers of a"}));
}

TEST_F(MetricStoreTest, ClearRemovesTheMetricsButNotTheLastResults)
{
    const auto metric = add("a");
    evaluated();
    store.clear();
    EXPECT_EQ(store.results().size(), 1u);
    EXPECT_THAT(evaluated(), IsEmpty());
}

} // namespace
