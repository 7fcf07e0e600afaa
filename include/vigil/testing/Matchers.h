// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_MATCHERS_H
#define VIGIL_TESTING_MATCHERS_H

// Matchers for GoogleTest, version 1.10 and later:
//
//     using namespace vigil::test;
//     EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(vigil::HealthStatus::Warning),
//                                               HasMetric("pending", HasValue(42))));
//
// They judge a table at once. Publishes() waits until the table of a service matches; use it if another
// thread publishes:
//
//     EXPECT_THAT(service, Publishes(HasCheck("shop", "orders", HasStatus(vigil::HealthStatus::Ok))));
//
// For the absence of something use published(): Publishes(Not(...)) would pass before it has arrived. A
// failure shows the whole table.

#include <gmock/gmock.h>

#include <atomic>
#include <locale>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>

#include <vigil/testing/FakeService.h>
#include <vigil/testing/PublishedTable.h>

namespace vigil {
namespace test {

namespace detail {

/// All of matchers, or anything if there are none.
template <typename Value, typename... Matchers>
::testing::Matcher<const Value&> allOf(const Matchers&... matchers)
{
    return ::testing::AllOf(::testing::A<const Value&>(), matchers...);
}

class CheckMatcher : public ::testing::MatcherInterface<const PublishedTable&>
{
public:
    CheckMatcher(std::string firstKey, std::string secondKey,
                 ::testing::Matcher<const PublishedCheck&> properties)
        : m_firstKey(std::move(firstKey)),
          m_secondKey(std::move(secondKey)),
          m_properties(std::move(properties))
    {}

    bool MatchAndExplain(const PublishedTable& table, ::testing::MatchResultListener* listener) const override
    {
        const PublishedCheck* check = table.check(m_firstKey, m_secondKey);
        *listener << "check " << m_firstKey << '/' << m_secondKey
                  << (check ? " is there, " : " is not there");
        return check && m_properties.MatchAndExplain(*check, listener);
    }

    void DescribeTo(std::ostream* out) const override
    {
        *out << "has a check " << m_firstKey << '/' << m_secondKey << " that ";
        m_properties.DescribeTo(out);
    }

    void DescribeNegationTo(std::ostream* out) const override
    {
        *out << "has no check " << m_firstKey << '/' << m_secondKey << " that ";
        m_properties.DescribeTo(out);
    }

private:
    const std::string m_firstKey;
    const std::string m_secondKey;
    const ::testing::Matcher<const PublishedCheck&> m_properties;
};

class MetricMatcher : public ::testing::MatcherInterface<const PublishedCheck&>
{
public:
    MetricMatcher(std::string name, ::testing::Matcher<const PublishedMetric&> properties)
        : m_name(std::move(name)), m_properties(std::move(properties))
    {}

    bool MatchAndExplain(const PublishedCheck& check, ::testing::MatchResultListener* listener) const override
    {
        const PublishedMetric* metric = check.metric(m_name);
        *listener << "metric \"" << m_name << (metric ? "\" is there, " : "\" is not there");
        return metric && m_properties.MatchAndExplain(*metric, listener);
    }

    void DescribeTo(std::ostream* out) const override
    {
        *out << "has a metric \"" << m_name << "\" that ";
        m_properties.DescribeTo(out);
    }

    void DescribeNegationTo(std::ostream* out) const override
    {
        *out << "has no metric \"" << m_name << "\" that ";
        m_properties.DescribeTo(out);
    }

private:
    const std::string m_name;
    const ::testing::Matcher<const PublishedMetric&> m_properties;
};

class CellMatcher : public ::testing::MatcherInterface<const PublishedTable&>
{
public:
    CellMatcher(std::string identifier, ::testing::Matcher<const PublishedCell&> content)
        : m_identifier(std::move(identifier)), m_content(std::move(content))
    {}

    bool MatchAndExplain(const PublishedTable& table, ::testing::MatchResultListener* listener) const override
    {
        const PublishedCell* cell = table.cell(m_identifier);
        *listener << "cell " << m_identifier << (cell ? " is there, " : " is not there");
        return cell && m_content.MatchAndExplain(*cell, listener);
    }

    void DescribeTo(std::ostream* out) const override
    {
        *out << "has a cell " << m_identifier << " that ";
        m_content.DescribeTo(out);
    }

    void DescribeNegationTo(std::ostream* out) const override
    {
        *out << "has no cell " << m_identifier << " that ";
        m_content.DescribeTo(out);
    }

private:
    const std::string m_identifier;
    const ::testing::Matcher<const PublishedCell&> m_content;
};

class PublishesMatcher : public ::testing::MatcherInterface<const FakeService&>
{
public:
    explicit PublishesMatcher(::testing::Matcher<const PublishedTable&> table) : m_table(std::move(table)) {}

    bool MatchAndExplain(const FakeService& service, ::testing::MatchResultListener* listener) const override
    {
        const auto limit = m_isLate ? FakeService::Milliseconds(0) : service.timeout();
        const bool matches =
            service.waitUntil([&](const PublishedTable& table) { return m_table.Matches(table); }, limit);
        m_isLate = !matches;
        if (listener->IsInterested())
            m_table.MatchAndExplain(service.snapshot(), listener);
        return matches;
    }

    void DescribeTo(std::ostream* out) const override
    {
        *out << "publishes a table that ";
        m_table.DescribeTo(out);
    }

    void DescribeNegationTo(std::ostream* out) const override
    {
        *out << "publishes no table that ";
        m_table.DescribeTo(out);
    }

private:
    const ::testing::Matcher<const PublishedTable&> m_table;
    mutable std::atomic<bool> m_isLate{
        false}; // GoogleTest asks again for the explanation: it must not wait twice
};

/// A number as the library writes it, in any locale of the process.
inline bool readNumber(const std::string& text, double& number)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    return static_cast<bool>(stream >> number);
}

} // namespace detail

/// Waits until the service's table matches, up to its timeout(). After one time-out the same matcher does not
/// wait again.
template <typename TableMatcher>
::testing::Matcher<const FakeService&> Publishes(const TableMatcher& table)
{
    return ::testing::Matcher<const FakeService&>(
        new detail::PublishesMatcher(::testing::SafeMatcherCast<const PublishedTable&>(table)));
}

// --- Of a table

/// Has this check, and the check matches all of properties: HasStatus, HasSummary, HasMetric.
template <typename... Properties>
::testing::Matcher<const PublishedTable&> HasCheck(const std::string& firstKey, const std::string& secondKey,
                                                   const Properties&... properties)
{
    return ::testing::Matcher<const PublishedTable&>(
        new detail::CheckMatcher(firstKey, secondKey, detail::allOf<PublishedCheck>(properties...)));
}

MATCHER(HasNoChecks, negation ? "has checks" : "has no checks")
{
    static_cast<void>(result_listener);
    return arg.checks().empty();
}

namespace detail {

MATCHER_P(NumberIs, number, "is " + ::testing::DescribeMatcher<int>(number, negation))
{
    return !arg.isText && ::testing::ExplainMatchResult(number, arg.number, result_listener);
}

MATCHER_P(TextIs, text, "is a text that " + ::testing::DescribeMatcher<std::string>(text, negation))
{
    return arg.isText && ::testing::ExplainMatchResult(text, arg.text, result_listener);
}

} // namespace detail

/// Has this cell, and it is a matching number. identifier is a full one.
template <typename Number>
::testing::Matcher<const PublishedTable&> HasNumber(const std::string& identifier, const Number& number)
{
    return ::testing::Matcher<const PublishedTable&>(
        new detail::CellMatcher(identifier, detail::NumberIs(number)));
}

/// Has this cell, and it is a matching text. identifier is a full one.
template <typename Text>
::testing::Matcher<const PublishedTable&> HasText(const std::string& identifier, const Text& text)
{
    return ::testing::Matcher<const PublishedTable&>(
        new detail::CellMatcher(identifier, detail::TextIs(text)));
}

// --- Of a check

/// Has this metric, and the metric matches all of properties: HasStatus, HasSummary, HasValue and so on.
template <typename... Properties>
::testing::Matcher<const PublishedCheck&> HasMetric(const std::string& name, const Properties&... properties)
{
    return ::testing::Matcher<const PublishedCheck&>(
        new detail::MetricMatcher(name, detail::allOf<PublishedMetric>(properties...)));
}

// --- Of a check or a metric

/// expected is a HealthStatus.
MATCHER_P(HasStatus, expected,
          (negation ? "does not have status " : "has status ") + std::string(nameOf(expected)))
{
    *result_listener << "whose status is " << nameOf(arg.status);
    return arg.status == expected;
}

/// text is a text or a matcher of one.
MATCHER_P(HasSummary, text, "has a summary that " + ::testing::DescribeMatcher<std::string>(text, negation))
{
    *result_listener << "whose summary is \"" << arg.summary << "\" ";
    return ::testing::ExplainMatchResult(text, arg.summary, result_listener);
}

// --- Of a metric

/// number is a number or a matcher of a double. Values have six significant digits.
MATCHER_P(HasValue, number, "has a value that " + ::testing::DescribeMatcher<double>(number, negation))
{
    *result_listener << "whose value is \"" << arg.value << "\" ";
    double value = 0;
    return detail::readNumber(arg.value, value) &&
           ::testing::ExplainMatchResult(number, value, result_listener);
}

MATCHER_P(HasUnit, text, "has a unit that " + ::testing::DescribeMatcher<std::string>(text, negation))
{
    *result_listener << "whose unit is \"" << arg.unit << "\" ";
    return ::testing::ExplainMatchResult(text, arg.unit, result_listener);
}

/// text is one as Range::toString() writes it, such as "~:40", or a matcher of one.
MATCHER_P(HasWarningRange, text,
          "has a warning range that " + ::testing::DescribeMatcher<std::string>(text, negation))
{
    *result_listener << "whose warning range is \"" << arg.warningRange << "\" ";
    return ::testing::ExplainMatchResult(text, arg.warningRange, result_listener);
}

/// text is one as Range::toString() writes it, or a matcher of one.
MATCHER_P(HasCriticalRange, text,
          "has a critical range that " + ::testing::DescribeMatcher<std::string>(text, negation))
{
    *result_listener << "whose critical range is \"" << arg.criticalRange << "\" ";
    return ::testing::ExplainMatchResult(text, arg.criticalRange, result_listener);
}

} // namespace test
} // namespace vigil

#endif
