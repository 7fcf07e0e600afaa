// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

/// The example without the owner of the socket: a test cannot create that user.
QByteArray example()
{
    QFile file(QStringLiteral(VIGIL_SNMPD_EXAMPLE));
    file.open(QIODevice::ReadOnly);
    return file.readAll().replace("agentXPerms", "#agentXPerms");
}

/// As an operator enables it.
QByteArray enabledExample()
{
    QByteArray text = example();
    for (const char* directive : {"createUser", "rouser", "rwuser", "trapsess"})
        text.replace(QByteArray("\n#") + directive, QByteArray("\n") + directive);
    return text.replace("udp:manager.example.com:162", "udp:127.0.0.1:9");
}

QStringList user(const char* name, const char* password, const char* secret)
{
    return {QStringLiteral("-v3"),   QStringLiteral("-l"), QStringLiteral("authPriv"), QStringLiteral("-u"),
            QLatin1String(name),     QStringLiteral("-a"), QStringLiteral("SHA-256"),  QStringLiteral("-A"),
            QLatin1String(password), QStringLiteral("-x"), QStringLiteral("AES"),      QStringLiteral("-X"),
            QLatin1String(secret)};
}

/// snmpd with the example, an agent and an application.
class SnmpdExample : public testing::Test
{
protected:
    const QString served = QStringLiteral(".1.3.6.1.4.1.32473.127.3.1.200.4.9.1");
    const QString outside = QStringLiteral(".1.3.6.1.4.1.32473.5.1");
    const QString ownObject = QStringLiteral(".1.3.6.1.2.1.1.5.0"); // sysName, which snmpd answers itself

    void start(const QByteArray& configuration)
    {
        snmpd = std::make_unique<SnmpdProcess>(configuration);
        ASSERT_TRUE(snmpd->start()) << snmpd->log().constData();
        agent = std::make_unique<AgentProcess>(snmpd->agentxAddress(), QStringList());
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        ASSERT_TRUE(agent->waitForLog("serving")) << agent->log().constData();
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish("127.3.1.200.4.9.1", 1);
        application->publish("5.1", 1);
    }

    SnmpTool manager(const QStringList& credentials) const
    {
        return SnmpTool(snmpd->udpAddress(), credentials);
    }

    std::unique_ptr<SnmpdProcess> snmpd;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
};

} // namespace

TEST_F(SnmpdExample, GrantsNoAccessWithoutChanges)
{
    start(example());
    const QStringList once{QStringLiteral("-r0"), QStringLiteral("-t1")};
    for (const char* community : {"public", "private", "vigil"}) {
        const SnmpTool anyone = manager(SnmpTool::community(QLatin1String(community)));
        EXPECT_NE(anyone.run(QStringLiteral("snmpget"), {served}, once).exitCode, 0) << community;
        EXPECT_NE(anyone.run(QStringLiteral("snmpget"), {ownObject}, once).exitCode, 0) << community;
    }
}

TEST_F(SnmpdExample, TheReaderReadsTheTwoSubtreesAndCannotSet)
{
    start(enabledExample());
    const SnmpTool reader = manager(user("vigilReader", "READER-PASSWORD", "READER-SECRET"));
    EXPECT_TRUE(reader.waitFor(served, QStringLiteral("1"))) << snmpd->log().constData();
    EXPECT_TRUE(reader.get(outside).startsWith(QStringLiteral("No Such")));
    EXPECT_TRUE(reader.get(ownObject).startsWith(QStringLiteral("No Such")));
    EXPECT_NE(reader.set({served, QStringLiteral("i"), QStringLiteral("2")}).exitCode, 0);
    EXPECT_EQ(reader.get(served), QStringLiteral("1"));
}

TEST_F(SnmpdExample, TheOperatorMaySet)
{
    start(enabledExample());
    const SnmpTool writer = manager(user("vigilOperator", "OPERATOR-PASSWORD", "OPERATOR-SECRET"));
    ASSERT_TRUE(writer.waitFor(served, QStringLiteral("1"))) << snmpd->log().constData();
    EXPECT_TRUE(support::askUntil([&] { // the time for an answer may pass in a pause of the machine
        return writer.set({served, QStringLiteral("i"), QStringLiteral("2")}).exitCode == 0;
    }));
    EXPECT_EQ(writer.get(served), QStringLiteral("2"));
    EXPECT_NE(writer.set({outside, QStringLiteral("i"), QStringLiteral("2")}).exitCode, 0);
}

TEST_F(SnmpdExample, AWrongPasswordGrantsNoAccess)
{
    start(enabledExample());
    const SnmpTool stranger = manager(user("vigilReader", "WRONG-PASSWORD", "READER-SECRET"));
    EXPECT_NE(stranger.run(QStringLiteral("snmpget"), {served}).exitCode, 0);
}
