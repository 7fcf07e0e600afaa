// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDir>

#include "agent/core/User.h"
#include "agent/process/CommandLine.h"
#include "support/QtPrinters.h"

using agent::Error;
using agent::Options;

namespace {

const QString program = QStringLiteral("vigil-agent");

/// The role of most tests; it allows every other option but --agentx.
const QStringList standalone{QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:1161")};

struct Outcome
{
    Options options;
    QString output;
    QString error; ///< empty on success
};

Outcome read(const QStringList& arguments)
{
    Outcome outcome;
    outcome.error =
        agent::readCommandLine(QStringList{program} + arguments, outcome.options, outcome.output).text();
    return outcome;
}

Outcome read(const char* option, const char* value, const QStringList& others = standalone)
{
    return read(others + QStringList{QLatin1String(option), QLatin1String(value)});
}

/// The error about a value; empty if the value is accepted.
QString errorOf(const char* option, const char* value, const QStringList& others = standalone)
{
    return read(option, value, others).error;
}

} // namespace

TEST(CommandLine, TheAddressAloneGivesTheDefaults)
{
    const Outcome outcome = read(standalone);
    ASSERT_EQ(outcome.error, QString());
    EXPECT_TRUE(outcome.output.isEmpty());
    const Options& options = outcome.options;
    EXPECT_EQ(options.standaloneAddress, QStringLiteral("udp:127.0.0.1:1161"));
    EXPECT_EQ(options.listenHost, QHostAddress(QHostAddress::LocalHost));
    EXPECT_EQ(options.listenPort, 43125);
    EXPECT_EQ(options.setTimeoutMs, 900);
    EXPECT_EQ(options.graceSeconds, 10);
    EXPECT_EQ(options.forgetSeconds, 86400);
    EXPECT_EQ(options.staleAfterSeconds, Options::learned);
    EXPECT_EQ(options.limits.connections, 256);
    EXPECT_EQ(options.limits.cells, 100'000);
    EXPECT_EQ(options.limits.userCells, 200'000);
    EXPECT_EQ(options.limits.megabytes, 256);
    EXPECT_EQ(options.limits.textBytes, 65'535);
    EXPECT_EQ(options.limits.frameBytes, 64 * 1024 * 1024);
    EXPECT_TRUE(options.configFile.isEmpty());
    EXPECT_FALSE(options.isVerbose);
}

TEST(CommandLine, ReadsEveryOption)
{
    const Outcome outcome =
        read(standalone + QStringList{QStringLiteral("--config"), QStringLiteral("/a/b.conf"),
                                      QStringLiteral("--listen"), QStringLiteral("[::1]:17"),
                                      QStringLiteral("--verbose"), QStringLiteral("--set-timeout"),
                                      QStringLiteral("250")});
    ASSERT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.options.configFile, QStringLiteral("/a/b.conf"));
    EXPECT_EQ(outcome.options.listenHost, QHostAddress(QHostAddress::LocalHostIPv6));
    EXPECT_EQ(outcome.options.listenPort, 17);
    EXPECT_EQ(outcome.options.setTimeoutMs, 250);
    EXPECT_TRUE(outcome.options.isVerbose);
}

TEST(CommandLine, OperatorsHaveASocketWhereTheSystemTellsUsers)
{
    EXPECT_TRUE(read(standalone).options.controlPath.isEmpty());
    EXPECT_FALSE(errorOf("--control", "control").isEmpty());
    if (platform::knowsLocalPeers())
        EXPECT_EQ(read("--control", "/run/a/control").options.controlPath, QStringLiteral("/run/a/control"));
    else
        EXPECT_FALSE(errorOf("--control", "/run/a/control").isEmpty());
}

TEST(CommandLine, TheAgentIsASubagentUnlessItIsToldToStandAlone)
{
    const Outcome outcome = read({});
    ASSERT_EQ(outcome.error, QString());
    EXPECT_FALSE(outcome.options.isStandalone());
    EXPECT_EQ(outcome.options.subtree, agent::enterpriseRoot());
    EXPECT_EQ(outcome.options.setTimeoutMs, 900);
    EXPECT_TRUE(read(standalone).options.isStandalone());
}

TEST(CommandLine, ReadsTheAddressOfSnmpd)
{
    const Outcome outcome = read("--agentx", "/a/master", {});
    ASSERT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.options.agentxAddress, QStringLiteral("/a/master"));
    EXPECT_FALSE(errorOf("--agentx", " ", {}).isEmpty());
}

TEST(CommandLine, RefusesTheOptionsOfTheOtherRole)
{
    EXPECT_TRUE(errorOf("--agentx", "/a/master").contains(QStringLiteral("exclude each other")));
    EXPECT_TRUE(errorOf("--config", "/a/b.conf", {}).contains(QStringLiteral("--config needs --standalone")));
}

TEST(CommandLine, DoesOneThingAtATime)
{
    EXPECT_EQ(errorOf("--config", "/a/b.conf",
                      standalone + QStringList{QStringLiteral("--check-config"), QStringLiteral("--show")}),
              QStringLiteral("--install-service, --check-config, --show and --service exclude each other"));
}

TEST(CommandLine, UnderSnmpdTheSetTimeoutStaysBelowSnmpdsOwn)
{
    const Outcome outcome = read("--set-timeout", "979", {});
    ASSERT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.options.setTimeoutMs, 979);
    const QString error = errorOf("--set-timeout", "980", {});
    EXPECT_TRUE(error.contains(QStringLiteral("behind snmpd it must be below 980"))) << qPrintable(error);
}

TEST(CommandLine, BehindSnmpdATextFitsIntoOneMessage)
{
    EXPECT_EQ(read({}).options.limits.textBytes, 60'000);
    EXPECT_EQ(read("--max-text", "60000", {}).options.limits.textBytes, 60'000);
    EXPECT_EQ(read("--max-text", "17", {}).options.limits.textBytes, 17);
    const QString error = errorOf("--max-text", "60001", {});
    EXPECT_TRUE(error.contains(QStringLiteral("behind snmpd it must not exceed 60000"))) << qPrintable(error);
}

TEST(CommandLine, TheSubtreeLiesAtOrBelowTheEnterprise)
{
    for (const char* value : {"1.3.6.1.4.1.32473", ".1.3.6.1.4.1.32473.127.3", "1.3.6.1.4.1.32473.0"})
        EXPECT_EQ(errorOf("--subtree", value), QString());
    EXPECT_EQ(read("--subtree", "1.3.6.1.4.1.32473.0").options.subtree,
              (agent::ObjectId{1, 3, 6, 1, 4, 1, 32473, 0}));
    for (const char* value :
         {"", ".", "1.3.6.1.4.1", "1.3.6.1.4.1.32474", "1.3.6.1.4.1.324730", "127.3", "1.3.6.1.4.1.32473.",
          "1.3.6.1.4.1.32473..1", "enterprises.32473", "1.3.6.1.4.1.32473.4294967296"}) {
        const QString error = errorOf("--subtree", value);
        EXPECT_TRUE(error.contains(QStringLiteral("--subtree"))) << value << ": " << qPrintable(error);
    }
}

TEST(CommandLine, TheSubtreeHasAsManyArcsAsSnmpCarries)
{
    const QByteArray longest = "1.3.6.1.4.1.32473" + QByteArray(".1").repeated(121);
    EXPECT_EQ(errorOf("--subtree", longest), QString());
    EXPECT_FALSE(errorOf("--subtree", longest + ".1").isEmpty());
}

TEST(CommandLine, RefusesAnEmptyAddress)
{
    EXPECT_FALSE(read({QStringLiteral("--standalone"), QString()}).error.isEmpty());
    EXPECT_FALSE(read({QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:1,")}).error.isEmpty());
}

TEST(CommandLine, RefusesToListenBeyondLoopback)
{
    for (const char* value : {"192.0.2.1:43125", "0.0.0.0:43125", "[::]:43125", "[2001:db8::1]:43125"}) {
        const QString error = errorOf("--listen", value);
        EXPECT_TRUE(error.contains(QStringLiteral("loopback"))) << value << ": " << qPrintable(error);
    }
}

TEST(CommandLine, AcceptsEveryLoopbackNotation)
{
    for (const char* value : {"127.0.0.1:0", "127.0.0.2:65535", "localhost:43125", "[::1]:43125"})
        EXPECT_EQ(errorOf("--listen", value), QString()) << value;
}

TEST(CommandLine, RefusesToListenWithoutHostOrPort)
{
    for (const char* value : {"", "43125", ":43125", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x",
                              "127.0.0.1:65536", "127.0.0.1:-1", "nohost:43125"})
        EXPECT_FALSE(errorOf("--listen", value).isEmpty()) << value;
}

TEST(CommandLine, RefusesASetTimeoutOutOfBounds)
{
    for (const char* value : {"", "0", "-5", "60001", "1.5", "abc", "900ms"})
        EXPECT_FALSE(errorOf("--set-timeout", value).isEmpty()) << value;
    for (const char* value : {"1", "60000"})
        EXPECT_EQ(errorOf("--set-timeout", value), QString()) << value;
}

TEST(CommandLine, TheTimesAreSecondsUpToAYear)
{
    EXPECT_EQ(read("--grace", "0").options.graceSeconds, 0);
    EXPECT_EQ(read("--forget", "31536000").options.forgetSeconds, 31536000);
    EXPECT_EQ(read("--stale-after", "60").options.staleAfterSeconds, 60);
    EXPECT_EQ(read("--stale-after", "0").options.staleAfterSeconds, 0);
    EXPECT_EQ(read("--stale-after", "auto").options.staleAfterSeconds, Options::learned);
    for (const char* option : {"--grace", "--forget", "--stale-after"}) {
        for (const char* value : {"", "-1", "31536001", "1.5", "10s"})
            EXPECT_TRUE(errorOf(option, value).startsWith(QLatin1String(option))) << option << ' ' << value;
    }
}

TEST(CommandLine, EachLimitHasItsOwnBounds)
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
                          {"--max-memory", "8", "1000000", "1000001", &agent::Limits::megabytes},
                          {"--max-text", "1", "65535", "65536", &agent::Limits::textBytes},
                          {"--max-frame", "1024", "67108864", "67108865", &agent::Limits::frameBytes}};
    for (const Case& each : cases) {
        for (const char* value : {each.least, each.most}) {
            const Outcome outcome = read(each.option, value);
            ASSERT_EQ(outcome.error, QString());
            EXPECT_EQ(outcome.options.limits.*each.limit, std::stoi(value));
        }
        for (const char* value : {"", "0", "-1", "many", each.tooMany})
            EXPECT_TRUE(errorOf(each.option, value).startsWith(QLatin1String(each.option))) << value;
    }
}

TEST(CommandLine, RefusesUnknownOptionsAndStrayArguments)
{
    EXPECT_FALSE(read({QStringLiteral("--no-such-option")}).error.isEmpty());
    EXPECT_FALSE(read({QStringLiteral("stray")}).error.isEmpty());
    EXPECT_FALSE(errorOf("--config", "").isEmpty());
    EXPECT_FALSE(read(standalone + QStringList{QStringLiteral("--config")}).error.isEmpty());
}

TEST(CommandLine, CheckConfigNeedsAFileButNoAddress)
{
    const QString check = QStringLiteral("--check-config");
    EXPECT_FALSE(read(QStringList{check}).error.isEmpty());
    const Outcome outcome = read({check, QStringLiteral("--config"), QStringLiteral("/a/file")});
    EXPECT_TRUE(outcome.error.isEmpty()) << qPrintable(outcome.error);
    EXPECT_EQ(outcome.options.task, Options::Task::CheckConfig);
    EXPECT_EQ(outcome.options.configFile, QStringLiteral("/a/file"));
}

namespace {

/// On a system with services of its own and without AgentX.
Outcome readOnWindows(const QStringList& arguments)
{
    Outcome outcome;
    outcome.options.canBeService = true;
    outcome.options.canJoinMaster = false;
    outcome.error =
        agent::readCommandLine(QStringList{program} + arguments, outcome.options, outcome.output).text();
    return outcome;
}

} // namespace

TEST(CommandLine, TheServiceGetsAllOtherOptionsWithWholePaths)
{
    const Outcome outcome =
        readOnWindows({QStringLiteral("--grace"), QStringLiteral("5"), QStringLiteral("--install-service"),
                       QStringLiteral("--config"), QStringLiteral("my.conf"), QStringLiteral("--verbose"),
                       QStringLiteral("--standalone=udp:127.0.0.1:1161")});
    ASSERT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.options.task, Options::Task::InstallService);
    const QString path = QDir::toNativeSeparators(QDir().absoluteFilePath(QStringLiteral("my.conf")));
    EXPECT_EQ(outcome.options.serviceArguments,
              QStringList({QStringLiteral("--service"), QStringLiteral("--grace"), QStringLiteral("5"),
                           QStringLiteral("--config"), path, QStringLiteral("--verbose"),
                           QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:1161")}));
}

TEST(CommandLine, AServiceWithoutAnAddressServesThePortOfSnmp)
{
    const Outcome outcome = readOnWindows({QStringLiteral("--install-service")});
    ASSERT_EQ(outcome.error, QString());
    EXPECT_EQ(outcome.options.serviceArguments,
              QStringList({QStringLiteral("--service"), QStringLiteral("--standalone"),
                           QStringLiteral("udp:161,tcp:161")}));
}

TEST(CommandLine, WrongOptionsOfAServiceAreRefusedBeforeItIsInstalled)
{
    EXPECT_FALSE(readOnWindows(
                     {QStringLiteral("--install-service"), QStringLiteral("--grace"), QStringLiteral("soon")})
                     .error.isEmpty());
    EXPECT_FALSE(
        readOnWindows({QStringLiteral("--install-service"), QStringLiteral("--service")}).error.isEmpty());
    EXPECT_FALSE(
        readOnWindows({QStringLiteral("--uninstall-service"), QStringLiteral("--verbose")}).error.isEmpty());
    EXPECT_EQ(readOnWindows({QStringLiteral("--uninstall-service")}).options.task,
              Options::Task::UninstallService);
}

TEST(CommandLine, TheServiceManagerHearsOfAWrongOption)
{
    const Outcome outcome = readOnWindows({QStringLiteral("--service"), QStringLiteral("--no-such-option")});
    EXPECT_FALSE(outcome.error.isEmpty());
    EXPECT_TRUE(outcome.options.isService);
}

TEST(CommandLine, ElsewhereTheOptionsOfTheServiceNameSystemd)
{
    for (const char* option : {"--install-service", "--uninstall-service", "--service"}) {
        const QString error = read({QLatin1String(option)}).error;
        EXPECT_TRUE(error.startsWith(QLatin1String(option))) << qPrintable(error);
        EXPECT_TRUE(error.contains(QLatin1String("systemctl enable"))) << qPrintable(error);
    }
}

TEST(CommandLine, HelpDescribesEveryOption)
{
    const QString help = read({QStringLiteral("--help")}).output;
    for (const char* option : {"--agentx", "--standalone", "--subtree", "--config", "--listen",
                               "--set-timeout", "--grace", "--forget", "--stale-after", "--max-connections",
                               "--max-cells", "--max-memory", "--max-text", "--max-frame", "--verbose"})
        EXPECT_TRUE(help.contains(QLatin1String(option))) << option;
}

TEST(CommandLine, HelpNamesTheGivenDefaults)
{
    Options options;
    options.agentxAddress = QStringLiteral("/a/master");
    options.graceSeconds = 17;
    QString help;
    const Error error = agent::readCommandLine({program, QStringLiteral("--help")}, options, help);
    ASSERT_FALSE(error) << qPrintable(error.text());
    EXPECT_TRUE(help.simplified().contains(QStringLiteral("Default: /a/master."))) << qPrintable(help);
    EXPECT_TRUE(help.simplified().contains(QStringLiteral("Default: 17."))) << qPrintable(help);
}

TEST(CommandLine, PrintsTheVersionOfTheBuild)
{
    const QString version = read({QStringLiteral("--version")}).output;
    EXPECT_TRUE(version.startsWith(QStringLiteral("vigil-agent 1.0.0."))) << qPrintable(version);
}

TEST(CommandLine, ShowAsksTheFirstAddressWithTheCommunity)
{
    const agent::Options byDefault = read({QStringLiteral("--show")}).options;
    EXPECT_EQ(byDefault.task, agent::Options::Task::Show);
    EXPECT_EQ(byDefault.showAddress, QStringLiteral("udp:127.0.0.1:161"));
    EXPECT_EQ(byDefault.community, QStringLiteral("public"));
    const agent::Options named = read({QStringLiteral("--show"), QStringLiteral("--standalone"),
                                       QStringLiteral(" tcp:[::1]:1161,udp:1"), QStringLiteral("--community"),
                                       QStringLiteral("other")})
                                     .options;
    EXPECT_EQ(named.showAddress, QStringLiteral("tcp:[::1]:1161"));
    EXPECT_EQ(named.community, QStringLiteral("other"));
    EXPECT_EQ(read(standalone).options.task, agent::Options::Task::Serve);
    EXPECT_TRUE(errorOf("--community", "other").contains(QStringLiteral("needs --show")));
}

TEST(CommandLine, UsersHaveIdentifiers)
{
    EXPECT_TRUE(read(standalone).options.limits.users.empty()) << "every user";
    const std::string root = *platform::rootUser();
    const std::string own = *platform::ownUser();
    EXPECT_EQ(read("--allow-users", (root + ", " + own).c_str()).options.limits.users,
              (std::set<std::string>{root, own}));
    for (const char* value : {"", ",", "no-such-user", "-1"})
        EXPECT_TRUE(errorOf("--allow-users", value).contains(QStringLiteral("there is no user"))) << value;
}
