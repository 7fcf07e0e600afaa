// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

const QString cell = QStringLiteral(".1.3.6.1.4.1.32473.5.1");

/// A standalone agent with a configuration file, and an application. The application accepts every SET.
class Reload : public testing::Test
{
protected:
    void write(const QByteArray& configuration)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(configuration);
    }

    void start(const QByteArray& configuration)
    {
        write(configuration);
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        application = std::make_unique<FakeApplication>(agent.applicationPort());
        application->publish("5.1", 1);
    }

    bool canRead(const QStringList& credentials) const
    {
        return SnmpTool(agent.udpAddress(), credentials).waitFor(cell, QStringLiteral("1"));
    }

    bool canRead(const char* community) const
    {
        return canRead(SnmpTool::community(QLatin1String(community)));
    }

    bool isIgnored(const char* community) const
    {
        const SnmpTool manager(agent.udpAddress(), SnmpTool::community(QLatin1String(community)));
        const SnmpTool::Result result =
            manager.run(QStringLiteral("snmpget"), {cell}, {QStringLiteral("-r0"), QStringLiteral("-t1")});
        return result.err.contains(QStringLiteral("Timeout"));
    }

    QString path() const { return m_directory.filePath(QStringLiteral("agent.conf")); }

private:
    const QTemporaryDir m_directory;

protected:
    AgentProcess agent{QStringList{QStringLiteral("--config"), path(), QStringLiteral("--verbose")}};
    std::unique_ptr<FakeApplication> application;
};

} // namespace

TEST_F(Reload, SighupLoadsTheChangedConfiguration)
{
    start("rocommunity first 127.0.0.1\n");
    ASSERT_TRUE(canRead("first"));
    EXPECT_TRUE(isIgnored("second"));
    write("rocommunity second 127.0.0.1\n");
    agent.reload();
    ASSERT_TRUE(agent.waitForLog("has been read again"));
    EXPECT_TRUE(canRead("second"));
    EXPECT_TRUE(isIgnored("first"));
}

TEST_F(Reload, TheSameUsersCanBeReloadedRepeatedly)
{
    const QByteArray configuration = "createUser reader SHA authPassword AES privPassword\n"
                                     "rouser reader priv\n";
    const QStringList reader{
        QStringLiteral("-v3"),         QStringLiteral("-l"),     QStringLiteral("authPriv"),
        QStringLiteral("-u"),          QStringLiteral("reader"), QStringLiteral("-a"),
        QStringLiteral("SHA"),         QStringLiteral("-A"),     QStringLiteral("authPassword"),
        QStringLiteral("-x"),          QStringLiteral("AES"),    QStringLiteral("-X"),
        QStringLiteral("privPassword")};
    start(configuration);
    ASSERT_TRUE(canRead(reader)) << agent.log().constData();
    for (int i = 1; i <= 3; ++i) {
        agent.reload();
        ASSERT_TRUE(agent.waitForLog("has been read again", i));
        EXPECT_TRUE(canRead(reader)) << agent.log().constData();
    }
}

TEST_F(Reload, AnUnreadableFileChangesNothing)
{
    start("rocommunity first 127.0.0.1\n");
    ASSERT_TRUE(canRead("first"));
    ASSERT_TRUE(QFile::remove(path()));
    agent.reload();
    ASSERT_TRUE(agent.waitForLog("SIGHUP changes nothing: cannot read the configuration file"));
    EXPECT_TRUE(canRead("first"));
    EXPECT_EQ(agent.stop(), 0);
}

TEST_F(Reload, AWrongLineChangesNothing)
{
    start("rocommunity first 127.0.0.1\n");
    ASSERT_TRUE(canRead("first"));
    write("rocommunity second 127.0.0.1\nrocomunity third 127.0.0.1\n");
    agent.reload();
    ASSERT_TRUE(agent.waitForLog("is wrong: line 2: ")) << agent.log().constData();
    EXPECT_TRUE(canRead("first"));
    EXPECT_TRUE(isIgnored("second"));
    write("rocommunity second 127.0.0.1\n");
    agent.reload();
    ASSERT_TRUE(agent.waitForLog("has been read again"));
    EXPECT_TRUE(canRead("second"));
}

TEST_F(Reload, TheCheckShowsWrongLinesAndNothingElse)
{
    const QStringList check{QStringLiteral("--check-config"), QStringLiteral("--config"), path()};
    write("createUser reader SHA authPassword AES privPassword\nrouser reader priv\n"
          "view all included .1.3\ntrap2sink udp:127.0.0.1:9 public\n");
    const AgentProcess::Outcome correct = AgentProcess::run(check);
    EXPECT_EQ(correct.exitCode, 0);
    EXPECT_TRUE(correct.out.endsWith(": correct\n")) << correct.out.constData();
    EXPECT_EQ(correct.err, QByteArray());

    write("rocommunity\nrouser reader priv\nrwuzer reader\n");
    const AgentProcess::Outcome wrong = AgentProcess::run(check);
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_TRUE(wrong.err.contains("line 1: ")) << wrong.err.constData();
    EXPECT_TRUE(wrong.err.contains("line 3: ")) << wrong.err.constData();
    EXPECT_TRUE(wrong.filesLeft.isEmpty());
}

// The check crashed, and so did an agent that started with such a file.
TEST_F(Reload, AUserWithoutAPassphraseIsAWrongLine)
{
    const QStringList check{QStringLiteral("--check-config"), QStringLiteral("--config"), path()};
    for (const char* user :
         {"reader SHA-256", "reader SHA", "-e 0x80000000017669676c reader SHA-256", "\"a reader\" SHA-256"}) {
        write(QByteArray("rocommunity public\ncreateUser ") + user + "\n");
        const AgentProcess::Outcome wrong = AgentProcess::run(check);
        EXPECT_EQ(wrong.exitCode, 1) << user;
        EXPECT_TRUE(wrong.err.contains("line 2: Error: missing passphrase")) << wrong.err.constData();
    }
    write("rocommunity public\ncreateUser reader\ncreateUser -e 0x80000000017669676c reader SHA-256 "
          "authPassword\n");
    EXPECT_EQ(AgentProcess::run(check).exitCode, 0);
}

// The check ended at once, and so did an agent that started with such a file.
TEST_F(Reload, ALineThatWouldEndTheAgentIsAWrongLine)
{
    const QStringList check{QStringLiteral("--check-config"), QStringLiteral("--config"), path()};
    for (const char* line :
         {"usmUser 1", "vacmAccess 1 1", "vacmAuthAccess 1", "vacmGroup 1", "vacmView 1", "perl -",
          "[snmp] doDebugging 1", "trapsink -", "trap2sink -1", "informsink -", "informsink -name x -"}) {
        write(QByteArray("rocommunity public\n") + line + "\n");
        const AgentProcess::Outcome wrong = AgentProcess::run(check);
        EXPECT_EQ(wrong.exitCode, 1) << line;
        EXPECT_TRUE(wrong.err.contains("line 2: Error: ")) << line << ": " << wrong.err.constData();
    }
    start("rocommunity public 127.0.0.1\nusmUser 1\nperl -\ninformsink -\n");
    EXPECT_TRUE(canRead("public")) << "the other lines count";
}

TEST(ReloadBehindSnmpd, SighupIsLoggedAndChangesNothing)
{
    SnmpdProcess snmpd;
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    AgentProcess agent(snmpd.agentxAddress(), {});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    ASSERT_TRUE(agent.waitForLog("serving"));
    FakeApplication application(agent.applicationPort());
    application.publish("5.1", 1);
    agent.reload();
    EXPECT_TRUE(agent.waitForLog("behind snmpd, access and notifications are configured there"));
    EXPECT_TRUE(SnmpTool(snmpd.udpAddress()).waitFor(cell, QStringLiteral("1")));
}
