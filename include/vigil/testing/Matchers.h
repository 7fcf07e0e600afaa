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
#include <functional>
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

/// Finds a part of a whole, such as a check of a table, and judges it by properties.
template <typename Whole, typename Part>
class PartMatcher : public ::testing::MatcherInterface<const Whole&>
{
public:
    /// Null if the whole has no such part.
    using Find = std::function<const Part*(const Whole&)>;

    /// name is the part's, for failure messages.
    PartMatcher(std::string name, Find find, ::testing::Matcher<const Part&> properties)
        : m_name(std::move(name)), m_find(std::move(find)), m_properties(std::move(properties))
    {}

    bool MatchAndExplain(const Whole& whole, ::testing::MatchResultListener* listener) const override
    {
        const Part* part = m_find(whole);
        *listener << m_name << (part ? " is there, " : " is not there");
        return part && m_properties.MatchAndExplain(*part, listener);
    }

    void DescribeTo(std::ostream* out) const override
    {
        *out << "has a " << m_name << " that ";
        m_properties.DescribeTo(out);
    }

    void DescribeNegationTo(std::ostream* out) const override
    {
        *out << "has no " << m_name << " that ";
        m_properties.DescribeTo(out);
    }

private:
    const std::string m_name;
    const Find m_find;
    const ::testing::Matcher<const Part&> m_properties;
};

inline ::testing::Matcher<const PublishedTable&>
hasCell(const std::string& identifier, const ::testing::Matcher<const PublishedCell&>& content)
{
    const auto find = [identifier](const PublishedTable& table) { return table.cell(identifier); };
    return ::testing::Matcher<const PublishedTable&>(
        new PartMatcher<PublishedTable, PublishedCell>("cell " + identifier, find, content));
}

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
    const auto find = [=](const PublishedTable& table) { return table.check(firstKey, secondKey); };
    return ::testing::Matcher<const PublishedTable&>(new detail::PartMatcher<PublishedTable, PublishedCheck>(
        "check " + firstKey + '/' + secondKey, find, detail::allOf<PublishedCheck>(properties...)));
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
    return detail::hasCell(identifier, detail::NumberIs(number));
}

/// Has this cell, and it is a matching text. identifier is a full one.
template <typename Text>
::testing::Matcher<const PublishedTable&> HasText(const std::string& identifier, const Text& text)
{
    return detail::hasCell(identifier, detail::TextIs(text));
}

// --- Of a check

/// Has this metric, and the metric matches all of properties: HasStatus, HasSummary, HasValue and so on.
template <typename... Properties>
::testing::Matcher<const PublishedCheck&> HasMetric(const std::string& name, const Properties&... properties)
{
    const auto find = [name](const PublishedCheck& check) { return check.metric(name); };
    return ::testing::Matcher<const PublishedCheck&>(new detail::PartMatcher<PublishedCheck, PublishedMetric>(
        "metric \"" + name + '"', find, detail::allOf<PublishedMetric>(properties...)));
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
