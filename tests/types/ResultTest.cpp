// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <vigil/Result.h>

#include <string>
#include <type_traits>

using vigil::HealthStatus;
using vigil::Result;

static_assert(static_cast<int>(HealthStatus::Ok) == 0, "what a manager reads");
static_assert(static_cast<int>(HealthStatus::Warning) == 1, "what a manager reads");
static_assert(static_cast<int>(HealthStatus::Critical) == 2, "what a manager reads");
static_assert(static_cast<int>(HealthStatus::Unknown) == 3, "what a manager reads");
static_assert(sizeof(HealthStatus) == 4, "binary interface");
static_assert(sizeof(void*) != 8 || sizeof(Result) == 2 * sizeof(std::string) + 16, "binary interface");
static_assert(std::has_virtual_destructor_v<Result>, "binary interface");

TEST(Result, ADefaultResultIsUnknownWithoutNameOrSummary)
{
    const Result result;
    EXPECT_EQ(result.getName(), "");
    EXPECT_EQ(result.getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(result.getSummary(), "");
}

TEST(Result, AResultWithOnlyANameIsUnknown)
{
    const Result result("load");
    EXPECT_EQ(result.getName(), "load");
    EXPECT_EQ(result.getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(result.getSummary(), "");
}

TEST(Result, ReturnsItsConstructorArguments)
{
    const Result result("load", HealthStatus::Warning, "load is 4");
    EXPECT_EQ(result.getName(), "load");
    EXPECT_EQ(result.getStatus(), HealthStatus::Warning);
    EXPECT_EQ(result.getSummary(), "load is 4");
}

TEST(Result, TheWordForAStatusDoesNotDependOnTheResult)
{
    const Result result("load", HealthStatus::Critical, "");
    EXPECT_EQ(result.getStatusString(HealthStatus::Ok), "OK");
    EXPECT_EQ(result.getStatusString(HealthStatus::Warning), "WARNING");
    EXPECT_EQ(result.getStatusString(HealthStatus::Critical), "CRITICAL");
    EXPECT_EQ(result.getStatusString(HealthStatus::Unknown), "UNKNOWN");
    EXPECT_EQ(Result().getStatusString(HealthStatus::Unknown), "UNKNOWN");
}

TEST(Result, CopiesHaveAllFields)
{
    const Result source("load", HealthStatus::Ok, "fine");
    const Result constructed(source);
    Result assigned;
    EXPECT_EQ(&(assigned = source), &assigned);
    for (const Result& copy : {constructed, assigned}) {
        EXPECT_EQ(copy.getName(), "load");
        EXPECT_EQ(copy.getStatus(), HealthStatus::Ok);
        EXPECT_EQ(copy.getSummary(), "fine");
    }
}

TEST(Result, GettersReturnCopies)
{
    const Result result("load", HealthStatus::Ok, "fine");
    std::string name = result.getName();
    name += "!";
    EXPECT_EQ(result.getName(), "load");
}
