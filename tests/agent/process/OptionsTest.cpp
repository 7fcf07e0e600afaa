// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/process/Options.h"

using agent::Options;

namespace {

const QStringList minimum{QStringLiteral("vigil-agent"), QStringLiteral("--standalone"),
                          QStringLiteral("udp:127.0.0.1:1161")};

/// The error text for the minimum and these arguments, empty when there is none.
QString problemWith(const QStringList& arguments)
{
    Options options;
    QString text;
    return Options::parse(minimum + arguments, options, text) == Options::Action::Fail ? text : QString();
}

/// The same without --standalone.
QString parseSubagent(const QStringList& arguments, Options& options)
{
    QString text;
    const QStringList all = QStringList{minimum.constFirst()} + arguments;
    return Options::parse(all, options, text) == Options::Action::Fail ? text : QString();
}

} // namespace

TEST(Options, TheAddressAloneGivesTheDefaults)
{
    Options options;
    QString text;
    ASSERT_EQ(Options::parse(minimum, options, text), Options::Action::Run);
    EXPECT_EQ(options.standaloneAddress, QStringLiteral("udp:127.0.0.1:1161"));
    EXPECT_EQ(options.listenHost, QHostAddress(QHostAddress::LocalHost));
    EXPECT_EQ(options.listenPort, 43125);
    EXPECT_EQ(options.setTimeoutMs, 900);
    EXPECT_EQ(options.graceSeconds, 10);
    EXPECT_EQ(options.forgetSeconds, 86400);
    EXPECT_EQ(options.staleAfterSeconds, 0);
    EXPECT_EQ(options.limits.connections, 256);
    EXPECT_EQ(options.limits.cells, 100'000);
    EXPECT_EQ(options.limits.textBytes, 65'535);
    EXPECT_EQ(options.limits.frameBytes, 64 * 1024 * 1024);
    EXPECT_TRUE(options.configFile.isEmpty());
    EXPECT_FALSE(options.isVerbose);
}

TEST(Options, EveryOptionIsRead)
{
    Options options;
    QString text;
    const QStringList arguments{QStringLiteral("--config"),  QStringLiteral("/a/b.conf"),
                                QStringLiteral("--listen"),  QStringLiteral("[::1]:17"),
                                QStringLiteral("--verbose"), QStringLiteral("--set-timeout"),
                                QStringLiteral("250")};
    ASSERT_EQ(Options::parse(minimum + arguments, options, text), Options::Action::Run);
    EXPECT_EQ(options.configFile, QStringLiteral("/a/b.conf"));
    EXPECT_EQ(options.listenHost, QHostAddress(QHostAddress::LocalHostIPv6));
    EXPECT_EQ(options.listenPort, 17);
    EXPECT_EQ(options.setTimeoutMs, 250);
    EXPECT_TRUE(options.isVerbose);
}

TEST(Options, TheRoleIsASubagentUnlessStandaloneIsAskedFor)
{
    Options options;
    QString text;
    ASSERT_EQ(Options::parse({QStringLiteral("vigil-agent")}, options, text), Options::Action::Run);
    EXPECT_FALSE(options.isStandalone());
    EXPECT_EQ(options.agentxAddress, QString());
    EXPECT_EQ(options.subtree, agent::enterpriseRoot());
    EXPECT_EQ(options.setTimeoutMs, 900);
    ASSERT_EQ(Options::parse(minimum, options, text), Options::Action::Run);
    EXPECT_TRUE(options.isStandalone());
}

TEST(Options, TheAddressOfSnmpdIsRead)
{
    Options options;
    ASSERT_EQ(parseSubagent({QStringLiteral("--agentx"), QStringLiteral("/a/master")}, options), QString());
    EXPECT_EQ(options.agentxAddress, QStringLiteral("/a/master"));
    EXPECT_FALSE(parseSubagent({QStringLiteral("--agentx"), QStringLiteral(" ")}, options).isEmpty());
}

TEST(Options, WhatBelongsToTheOtherRoleIsRefused)
{
    Options options;
    EXPECT_TRUE(problemWith({QStringLiteral("--agentx"), QStringLiteral("/a/master")})
                    .contains(QStringLiteral("exclude each other")));
    EXPECT_TRUE(parseSubagent({QStringLiteral("--config"), QStringLiteral("/a/b.conf")}, options)
                    .contains(QStringLiteral("--config goes with --standalone")));
}

TEST(Options, BehindSnmpdTheSetTimeoutStaysBelowSnmpdsOwn)
{
    Options options;
    ASSERT_EQ(parseSubagent({QStringLiteral("--set-timeout"), QStringLiteral("999")}, options), QString());
    EXPECT_EQ(options.setTimeoutMs, 999);
    const QString problem = parseSubagent({QStringLiteral("--set-timeout"), QStringLiteral("1000")}, options);
    EXPECT_TRUE(problem.contains(QStringLiteral("behind snmpd it must stay below 1000")))
        << qPrintable(problem);
}

TEST(Options, ASubtreeLiesAtOrBelowTheEnterprise)
{
    Options options;
    QString text;
    for (const char* value : {"1.3.6.1.4.1.32473", ".1.3.6.1.4.1.32473.127.3", "1.3.6.1.4.1.32473.0"}) {
        const QStringList arguments{QStringLiteral("--subtree"), QLatin1String(value)};
        ASSERT_EQ(Options::parse(minimum + arguments, options, text), Options::Action::Run) << value;
    }
    EXPECT_EQ(options.subtree, (agent::ObjectId{1, 3, 6, 1, 4, 1, 32473, 0}));
    for (const char* value :
         {"", ".", "1.3.6.1.4.1", "1.3.6.1.4.1.32474", "1.3.6.1.4.1.324730", "127.3", "1.3.6.1.4.1.32473.",
          "1.3.6.1.4.1.32473..1", "enterprises.32473", "1.3.6.1.4.1.32473.4294967296"}) {
        const QString problem = problemWith({QStringLiteral("--subtree"), QLatin1String(value)});
        EXPECT_TRUE(problem.contains(QStringLiteral("--subtree"))) << value << ": " << qPrintable(problem);
    }
    const QString longest = QStringLiteral("1.3.6.1.4.1.32473") + QStringLiteral(".1").repeated(121);
    EXPECT_EQ(problemWith({QStringLiteral("--subtree"), longest}), QString());
    EXPECT_FALSE(problemWith({QStringLiteral("--subtree"), longest + QStringLiteral(".1")}).isEmpty());
}

TEST(Options, AnEmptyAddressIsRefused)
{
    EXPECT_FALSE(problemWith({QStringLiteral("--standalone"), QString()}).isEmpty());
    EXPECT_FALSE(problemWith({QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:1,")}).isEmpty());
}

TEST(Options, AHostThatIsNotLoopbackIsRefused)
{
    for (const char* value : {"192.0.2.1:43125", "0.0.0.0:43125", "[::]:43125", "[2001:db8::1]:43125"}) {
        const QString problem = problemWith({QStringLiteral("--listen"), QLatin1String(value)});
        EXPECT_TRUE(problem.contains(QStringLiteral("loopback"))) << value << ": " << qPrintable(problem);
    }
}

TEST(Options, EveryLoopbackNotationIsAccepted)
{
    for (const char* value : {"127.0.0.1:0", "127.0.0.2:65535", "localhost:43125", "[::1]:43125"})
        EXPECT_EQ(problemWith({QStringLiteral("--listen"), QLatin1String(value)}), QString()) << value;
}

TEST(Options, AListenValueWithoutHostOrPortIsRefused)
{
    for (const char* value : {"", "43125", ":43125", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x",
                              "127.0.0.1:65536", "127.0.0.1:-1", "nohost:43125"})
        EXPECT_FALSE(problemWith({QStringLiteral("--listen"), QLatin1String(value)}).isEmpty()) << value;
}

TEST(Options, ASetTimeoutOutsideItsBoundsIsRefused)
{
    for (const char* value : {"", "0", "-5", "60001", "1.5", "abc", "900ms"})
        EXPECT_FALSE(problemWith({QStringLiteral("--set-timeout"), QLatin1String(value)}).isEmpty()) << value;
    for (const char* value : {"1", "60000"})
        EXPECT_EQ(problemWith({QStringLiteral("--set-timeout"), QLatin1String(value)}), QString()) << value;
}

TEST(Options, TheTimesAreSecondsUpToAYear)
{
    Options options;
    QString text;
    const QStringList arguments{QStringLiteral("--grace"),       QStringLiteral("0"),
                                QStringLiteral("--forget"),      QStringLiteral("31536000"),
                                QStringLiteral("--stale-after"), QStringLiteral("60")};
    ASSERT_EQ(Options::parse(minimum + arguments, options, text), Options::Action::Run);
    EXPECT_EQ(options.graceSeconds, 0);
    EXPECT_EQ(options.forgetSeconds, 31536000);
    EXPECT_EQ(options.staleAfterSeconds, 60);
    for (const char* option : {"--grace", "--forget", "--stale-after"}) {
        for (const char* value : {"", "-1", "31536001", "1.5", "10s"}) {
            const QString problem = problemWith({QLatin1String(option), QLatin1String(value)});
            EXPECT_TRUE(problem.startsWith(QLatin1String(option))) << option << ' ' << value;
        }
    }
}

TEST(Options, TheLimitsHaveBoundsOfTheirOwn)
{
    struct Case
    {
        const char* option;
        const char* least;
        const char* most;
        const char* tooMany;
        int agent::Limits::*limit;
    };
    const Case cases[] = {{"--max-connections", "1", "10000", "10001", &agent::Limits::connections},
                          {"--max-cells", "1", "10000000", "10000001", &agent::Limits::cells},
                          {"--max-text", "1", "65535", "65536", &agent::Limits::textBytes},
                          {"--max-frame", "1024", "67108864", "67108865", &agent::Limits::frameBytes}};
    for (const Case& each : cases) {
        const QString option = QLatin1String(each.option);
        for (const char* value : {each.least, each.most}) {
            Options options;
            QString text;
            const QStringList arguments = minimum + QStringList{option, QLatin1String(value)};
            ASSERT_EQ(Options::parse(arguments, options, text), Options::Action::Run) << qPrintable(text);
            EXPECT_EQ(options.limits.*each.limit, std::stoi(value));
        }
        for (const char* value : {"", "0", "-1", "many", each.tooMany})
            EXPECT_TRUE(problemWith({option, QLatin1String(value)}).startsWith(option)) << value;
    }
}

TEST(Options, UnknownOptionsAndStrayArgumentsAreRefused)
{
    EXPECT_FALSE(problemWith({QStringLiteral("--no-such-option")}).isEmpty());
    EXPECT_FALSE(problemWith({QStringLiteral("stray")}).isEmpty());
    EXPECT_FALSE(problemWith({QStringLiteral("--config"), QString()}).isEmpty());
    EXPECT_FALSE(problemWith({QStringLiteral("--config")}).isEmpty());
}

TEST(Options, HelpAndVersionNeedNothingElse)
{
    Options options;
    QString text;
    const QString program = minimum.constFirst();
    EXPECT_EQ(Options::parse({program, QStringLiteral("--help")}, options, text), Options::Action::PrintText);
    for (const char* option : {"--agentx", "--standalone", "--subtree", "--config", "--listen",
                               "--set-timeout", "--grace", "--forget", "--stale-after", "--max-connections",
                               "--max-cells", "--max-text", "--max-frame", "--verbose"})
        EXPECT_TRUE(text.contains(QLatin1String(option))) << option;
    EXPECT_EQ(Options::parse({program, QStringLiteral("--version")}, options, text),
              Options::Action::PrintText);
    EXPECT_TRUE(text.startsWith(QStringLiteral("vigil-agent 1.0.0."))) << qPrintable(text);
}
