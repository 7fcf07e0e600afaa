// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <vector>

#include "Options.h"

using testing::HasSubstr;

namespace {

struct Parsed
{
    Options options;
    Options::Action action = Options::Action::Run;
    std::string problem;
};

Parsed parse(const std::vector<std::string>& arguments)
{
    Parsed parsed;
    parsed.action = parsed.options.parse(arguments, parsed.problem);
    return parsed;
}

void expectRefused(const std::vector<std::string>& arguments, const std::string& reason)
{
    const Parsed parsed = parse(arguments);
    EXPECT_EQ(parsed.action, Options::Action::Fail);
    EXPECT_THAT(parsed.problem, HasSubstr(reason));
}

} // namespace

TEST(HostHealthOptions, HaveDefaultsWithoutArguments)
{
    const Parsed parsed = parse({});
    EXPECT_EQ(parsed.action, Options::Action::Run);
    EXPECT_EQ(parsed.options.interval, std::chrono::seconds(5));
    EXPECT_EQ(parsed.options.memory.warning.toString(), "~:85");
    EXPECT_EQ(parsed.options.uptime.critical.toString(), "off");
}

TEST(HostHealthOptions, EachRangeCanBeGiven)
{
    const Parsed parsed = parse({"--load-warning", "2", "--disk-critical", "@10:20", "--interval", "60"});
    EXPECT_EQ(parsed.action, Options::Action::Run);
    EXPECT_EQ(parsed.options.load.warning.toString(), "2");
    EXPECT_EQ(parsed.options.load.critical.toString(), "~:4");
    EXPECT_EQ(parsed.options.disk.critical.toString(), "@10:20");
    EXPECT_EQ(parsed.options.interval, std::chrono::seconds(60));
}

TEST(HostHealthOptions, ABadRangeIsRefusedAndNamed)
{
    expectRefused({"--memory-warning", "lots"}, "--memory-warning lots");
    expectRefused({"--swap-critical", "1:2:3"}, "--swap-critical 1:2:3");
}

TEST(HostHealthOptions, ABadIntervalIsRefused)
{
    for (const char* value : {"0", "-1", "x", "", "1.5", "86401", "99999999999999999999"})
        expectRefused({"--interval", value}, "--interval");
}

TEST(HostHealthOptions, AnUnknownOptionIsRefused)
{
    expectRefused({"--memory"}, "unknown option --memory");
    expectRefused({"now"}, "unknown option now");
}

TEST(HostHealthOptions, AnOptionWithoutItsValueIsRefused)
{
    expectRefused({"--interval"}, "--interval needs a value");
    expectRefused({"--interval", "5", "--load-warning"}, "--load-warning needs a value");
}

TEST(HostHealthOptions, HelpNamesEveryQuantity)
{
    EXPECT_EQ(parse({"--help"}).action, Options::Action::ShowHelp);
    for (const char* name : {"--interval", "load", "memory", "swap", "uptime", "processes", "disk"})
        EXPECT_THAT(Options::help(), HasSubstr(name));
}
