// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <vigil/HealthCheck.h>

#include <string>
#include <utility>
#include <vector>

#include "types/Summary.h"

using vigil::HealthStatus;
using vigil::Result;

namespace {

/// A health check with nothing but a description.
class DescribedCheck : public vigil::HealthCheck
{
public:
    explicit DescribedCheck(std::string description) : m_description(std::move(description)) {}

    vigil::SimpleMetric* createSimpleMetric(const std::string&) override { return nullptr; }
    vigil::ScalarMetric* createScalarMetric(const std::string&) override { return nullptr; }
    std::string getFirstKey() const override { return "first"; }
    std::string getSecondKey() const override { return "second"; }
    void setDescription(const std::string& description) override { m_description = description; }
    std::string getDescription() const override { return m_description; }
    void registerManagementHandler(ManagementHandler*) override {}
    void unregisterManagementHandler() override {}
    void update() override {}
    HealthStatus getStatus() const override { return HealthStatus::Unknown; }
    std::string getSummary() const override { return "the check's own summary"; }
    void getResults(std::vector<Result>&) const override {}
    void destroy() override {}

private:
    std::string m_description;
};

std::vector<ResultEntry> entries(const std::vector<std::pair<HealthStatus, std::string>>& results)
{
    std::vector<ResultEntry> list;
    for (const auto& [status, summary] : results) {
        list.emplace_back();
        list.back().result = Result("metric", status, summary);
    }
    return list;
}

} // namespace

TEST(Summary, WithoutProblemsItIsTheDescription)
{
    const DescribedCheck check("disk");
    EXPECT_EQ(Summary().summarizeOk(check, entries({{HealthStatus::Ok, "a"}})), "disk");
    EXPECT_EQ(Summary().summarizeOk(check, {}), "disk");
    EXPECT_EQ(Summary().summarizeOk(DescribedCheck(""), {}), "");
}

TEST(Summary, WithoutProblemsTheEntriesAreIgnored)
{
    EXPECT_EQ(Summary().summarizeOk(DescribedCheck("disk"), entries({{HealthStatus::Critical, "c"}})),
              "disk");
}

TEST(Summary, ProblemsFollowTheDescriptionInTheOrderOfTheEntries)
{
    const auto list =
        entries({{HealthStatus::Ok, "a"}, {HealthStatus::Warning, "b"}, {HealthStatus::Critical, "c"}});
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("disk"), list), "disk - b c");
}

TEST(Summary, ProblemsAreNotOrderedBySeverity)
{
    const auto list =
        entries({{HealthStatus::Unknown, "u"}, {HealthStatus::Warning, "w"}, {HealthStatus::Critical, "c"}});
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("disk"), list), "disk - u w c");
}

TEST(Summary, TheSeparatorIsWrittenEvenWithoutADescription)
{
    const auto list =
        entries({{HealthStatus::Ok, "a"}, {HealthStatus::Warning, "b"}, {HealthStatus::Critical, "c"}});
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck(""), list), " - b c");
}

TEST(Summary, TheSeparatorIsWrittenEvenWithoutAProblemText)
{
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("disk"), {}), "disk - ");
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("disk"), entries({{HealthStatus::Ok, "a"}})),
              "disk - ");
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("disk"), entries({{HealthStatus::Warning, ""}})),
              "disk - ");
}

TEST(Summary, AnEmptyProblemTextKeepsItsSeparator)
{
    const auto list =
        entries({{HealthStatus::Warning, "b"}, {HealthStatus::Unknown, ""}, {HealthStatus::Critical, "c"}});
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("disk"), list), "disk - b  c");
}

TEST(Summary, BlanksInTextsAndDescriptionsStay)
{
    const auto list = entries({{HealthStatus::Warning, " b "}, {HealthStatus::Warning, "c\n"}});
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck(" disk "), list), " disk  -  b  c\n");
}

TEST(Summary, TextsAreUtf8)
{
    const auto list = entries({{HealthStatus::Warning, "40 \xC2\xB0"
                                                       "C"}});
    EXPECT_EQ(Summary().summarizeProblems(DescribedCheck("T\xC3\xBCr"), list), "T\xC3\xBCr - 40 \xC2\xB0"
                                                                               "C");
    EXPECT_EQ(Summary().summarizeOk(DescribedCheck("T\xC3\xBCr"), list), "T\xC3\xBCr");
}
