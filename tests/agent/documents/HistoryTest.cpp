// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "agent/documents/History.h"
#include "support/PublishedChecks.h"

using agent::History;

class HistoryTest : public ::testing::Test
{
protected:
    void publish(const std::string& value) { m_checks.publishMetric({"a", "b", "m"}, 0, value); }

    std::vector<float> values() const
    {
        return m_history.valuesOf({m_checks.list.nextMetric({0, 0})->check, 1});
    }

    void nextRound() { m_checks.clock.advance(History::intervalMs); }

    support::PublishedChecks m_checks;
    History m_history{m_checks.list, m_checks.clock, [](agent::ApplicationId application) {
                          return agent::User(std::to_string(application % 10));
                      }};
};

TEST_F(HistoryTest, TakesAValueEachInterval)
{
    publish("1");
    EXPECT_TRUE(values().empty());
    m_history.start();
    m_checks.clock.advance(100);
    publish("2.5");
    nextRound();
    const std::vector<float> taken = values();
    ASSERT_EQ(taken.size(), static_cast<size_t>(History::samples));
    EXPECT_EQ(taken[taken.size() - 1], 2.5F);
    EXPECT_EQ(taken[taken.size() - 2], 1.0F);
    EXPECT_TRUE(std::isnan(taken[taken.size() - 3]));
}

TEST_F(HistoryTest, KeepsAnHour)
{
    m_history.start();
    for (int value = 0; value < 2 * History::samples; ++value) {
        publish(std::to_string(value));
        nextRound();
        m_checks.clock.advance(0);
    }
    m_checks.clock.advance(100);
    const std::vector<float> taken = values();
    for (size_t at = 1; at < taken.size(); ++at)
        EXPECT_EQ(taken[at], taken[at - 1] + 1);
    EXPECT_GE(taken.back(), 2.0F * History::samples - 2);
}

TEST_F(HistoryTest, AMissingMetricLeavesAGap)
{
    publish("1");
    m_history.start();
    m_checks.clock.advance(100);
    m_checks.remove({"a", "b", "m"});
    nextRound();
    nextRound();
    publish("4");
    nextRound();
    const std::vector<float> taken = values();
    ASSERT_FALSE(taken.empty());
    EXPECT_EQ(taken[taken.size() - 1], 4.0F);
    EXPECT_TRUE(std::isnan(taken[taken.size() - 2]));
    EXPECT_TRUE(std::isnan(taken[taken.size() - 3]));
    EXPECT_EQ(taken[taken.size() - 4], 1.0F);
}

TEST_F(HistoryTest, ARemovedMetricIsForgottenAfterAnHour)
{
    publish("1");
    m_history.start();
    m_checks.clock.advance(100);
    EXPECT_EQ(m_history.size(), 1U);
    m_checks.remove({"a", "b", "m"});
    m_checks.clock.advance((History::samples + 2) * History::intervalMs);
    EXPECT_EQ(m_history.size(), 0U);
}

TEST_F(HistoryTest, AMetricWithoutANumberHasNone)
{
    publish("full");
    m_history.start();
    m_checks.clock.advance(100);
    EXPECT_EQ(m_history.size(), 0U);
}

TEST_F(HistoryTest, TheNumberOfMetricsIsLimited)
{
    for (size_t number = 0; number < History::maxSeries + 10; ++number)
        m_checks.publishMetric({"a", "b", std::to_string(number)}, 0, "1");
    m_history.start();
    m_checks.clock.advance(2 * History::intervalMs);
    EXPECT_EQ(m_history.size(), History::maxSeries);
}

// The first application with many metrics left no history to the others.
TEST_F(HistoryTest, ALateApplicationGetsItsShare)
{
    for (size_t number = 0; number < History::maxSeries + 10; ++number)
        m_checks.publishMetric({"a", "greedy", std::to_string(number)}, 0, "1");
    m_history.start();
    m_checks.clock.advance(2 * History::intervalMs);
    m_checks.application = 2;
    m_checks.publishMetric({"b", "modest", "m"}, 0, "7");
    m_checks.clock.advance(3 * History::intervalMs / 2); // to the end of a round, and not to the start of one
    const auto modest = m_checks.list.metricAfter({1, std::numeric_limits<unsigned int>::max()});
    ASSERT_TRUE(modest);
    const std::vector<float> taken = m_history.valuesOf(*modest);
    ASSERT_FALSE(taken.empty());
    EXPECT_EQ(taken.back(), 7.0F);
    EXPECT_EQ(m_history.size(), History::maxSeries);
}

// The application of a metric changes when it restarts.
TEST_F(HistoryTest, ARestartedApplicationKeepsItsHistory)
{
    publish("1");
    m_history.start();
    m_checks.clock.advance(100);
    m_checks.application = 2;
    publish("2");
    nextRound();
    m_checks.clock.advance(100);
    const std::vector<float> taken = values();
    EXPECT_EQ(taken[taken.size() - 1], 2.0F);
    EXPECT_EQ(taken[taken.size() - 2], 1.0F);
    EXPECT_EQ(m_history.size(), 1U);
}
