// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/LoadFreeTimer.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::LoadFreeTimer;
using support::SnmpTool;

namespace {

QStringList integer(const char* relative, const char* value)
{
    return {full(relative), QStringLiteral("i"), QLatin1String(value)};
}

QStringList text(const char* relative, const char* value)
{
    return {full(relative), QStringLiteral("s"), QLatin1String(value)};
}

/// The SNMP error in the tool's output.
QString reason(const SnmpTool::Result& result)
{
    const QString mark = QStringLiteral("Reason: ");
    const int start = result.err.indexOf(mark);
    if (result.exitCode == 0 || start < 0)
        return QStringLiteral("exit code %1: %2%3").arg(result.exitCode).arg(result.out, result.err);
    return result.err.mid(start + mark.size())
        .section(QLatin1Char('\n'), 0, 0)
        .section(QLatin1Char(' '), 0, 0);
}

/// An agent and an application with an integer at 5.1 and a text at 5.2. The community "private" may write.
class AgentSet : public testing::Test
{
protected:
    void start(int setTimeoutMs = 60'000)
    {
        QFile file(m_directory.filePath(QStringLiteral("agent.conf")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("rwcommunity private 127.0.0.1\n");
        file.close();
        agent = std::make_unique<AgentProcess>(
            QStringList{QStringLiteral("--config"), file.fileName(), QStringLiteral("--verbose"),
                        QStringLiteral("--set-timeout"), QString::number(setTimeoutMs)});
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        tool =
            std::make_unique<SnmpTool>(agent->udpAddress(), SnmpTool::community(QStringLiteral("private")));
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish("5.1", 1);
        application->publish("5.2", std::string("old"));
        ASSERT_TRUE(tool->waitFor(full("5.2"), QStringLiteral("\"old\"")));
    }

    void expectUnchanged()
    {
        EXPECT_EQ(tool->get(full("5.1")), QStringLiteral("1"));
        EXPECT_EQ(tool->get(full("5.2")), QStringLiteral("\"old\""));
        EXPECT_TRUE(application->commits().empty());
    }

    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<SnmpTool> tool;
    std::unique_ptr<FakeApplication> application;

private:
    QTemporaryDir m_directory;
};

} // namespace

TEST_F(AgentSet, AnAcceptedValueIsCommittedAndServed)
{
    start();
    EXPECT_EQ(tool->set(text("5.2", "new")).exitCode, 0);
    EXPECT_EQ(tool->get(full("5.2")), QStringLiteral("\"new\""));
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 1; }));
    const FakeApplication::Request& question = application->questions().at(0);
    EXPECT_EQ(question.callbackId, 2);
    EXPECT_EQ(question.dataType, 1);
    EXPECT_EQ(question.oid, "5.2");
    EXPECT_EQ(question.value, "new");
    const FakeApplication::Request& commit = application->commits().at(0);
    EXPECT_EQ(commit.callbackId, 0);
    EXPECT_EQ(commit.dataType, 1);
    EXPECT_EQ(commit.oid, "5.2");
    EXPECT_EQ(commit.value, "new");
}

TEST_F(AgentSet, EachSetIsOneLineInTheLog)
{
    start();
    EXPECT_EQ(tool->set(integer("5.1", "2") + text("5.2", "new")).exitCode, 0);
    ASSERT_TRUE(agent->waitForLog("SET by community private at UDP: [127.0.0.1]:"))
        << agent->log().constData();
    EXPECT_TRUE(
        agent->log().contains(": 1.3.6.1.4.1.32473.5.1 from 1 to 2, 1.3.6.1.4.1.32473.5.2 from \"old\" "
                              "to \"new\"; answer: noError\n"))
        << agent->log().constData();
    tool->set(integer("5.3", "2"));
    EXPECT_TRUE(agent->waitForLog("5.3 from nothing to 2; answer: noCreation\n")) << agent->log().constData();
    application->onQuestion = [&](const FakeApplication::Request& question) {
        application->answer(question, 1);
    };
    tool->set(integer("5.1", "3"));
    EXPECT_TRUE(agent->waitForLog("5.1 from 2 to 3; answer: wrongValue\n")) << agent->log().constData();
    EXPECT_EQ(agent->log().count("SET by "), 3);
}

TEST_F(AgentSet, AnIntegerIsAskedAndCommittedAsAnInteger)
{
    start();
    EXPECT_EQ(tool->set(integer("5.1", "-7")).exitCode, 0);
    EXPECT_EQ(tool->get(full("5.1")), QStringLiteral("-7"));
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 1; }));
    EXPECT_EQ(application->questions().at(0).dataType, 0);
    EXPECT_EQ(application->commits().at(0).dataType, 0);
    EXPECT_EQ(application->commits().at(0).value, "-7");
}

TEST_F(AgentSet, AnEmptyTextCanBeSet)
{
    start();
    EXPECT_EQ(tool->set(text("5.2", "")).exitCode, 0);
    EXPECT_EQ(tool->get(full("5.2")), QStringLiteral("\"\""));
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 1; }));
}

TEST_F(AgentSet, AValuePublishedDuringTheCommitReplacesTheCommittedOne)
{
    start();
    application->onCommit = [&](const FakeApplication::Request&) { application->publish("5.1", 1); };
    EXPECT_EQ(tool->set(integer("5.1", "2")).exitCode, 0);
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 1; }));
    EXPECT_TRUE(tool->waitFor(full("5.1"), QStringLiteral("1")));
}

TEST_F(AgentSet, TheApplicationsStatusIsPassedOn)
{
    start();
    const std::pair<int, const char*> statuses[] = {
        {1, "wrongValue"},          {2, "(noSuchName)"},      {6, "noAccess"},    {12, "inconsistentValue"},
        {16, "authorizationError"}, {18, "inconsistentName"}, {19, "(genError)"}, {-3, "(genError)"}};
    for (const auto& [answered, told] : statuses) {
        application->onQuestion = [&, status = answered](const FakeApplication::Request& question) {
            application->answer(question, status);
        };
        EXPECT_EQ(reason(tool->set(integer("5.1", "2"))), QLatin1String(told)) << answered;
    }
    expectUnchanged();
}

TEST_F(AgentSet, AWrongTypeIsRefusedWithoutAsking)
{
    start();
    EXPECT_EQ(reason(tool->set(text("5.1", "2"))), QStringLiteral("wrongType"));
    EXPECT_EQ(reason(tool->set(integer("5.2", "2"))), QStringLiteral("wrongType"));
    EXPECT_EQ(reason(tool->set({full("5.1"), QStringLiteral("u"), QStringLiteral("2")})),
              QStringLiteral("wrongType"));
    expectUnchanged();
    EXPECT_TRUE(application->questions().empty());
}

TEST_F(AgentSet, ATextWithAZeroByteIsRefusedWithoutAsking)
{
    start();
    EXPECT_EQ(reason(tool->set({full("5.2"), QStringLiteral("x"), QStringLiteral("61 00 62")})),
              QStringLiteral("wrongValue"));
    expectUnchanged();
    EXPECT_TRUE(application->questions().empty());
}

TEST_F(AgentSet, ASetCreatesNoCell)
{
    start();
    EXPECT_EQ(reason(tool->set(integer("5.3", "2"))), QStringLiteral("noCreation"));
    EXPECT_EQ(reason(tool->set(integer("5", "2"))), QStringLiteral("noCreation"));
    expectUnchanged();
}

TEST_F(AgentSet, ASetWithoutAReplyReturnsResourceUnavailable)
{
    start(200);
    application->onQuestion = [](const FakeApplication::Request&) {};
    EXPECT_EQ(reason(tool->set(integer("5.1", "2"))), QStringLiteral("resourceUnavailable"));
    EXPECT_EQ(application->questions().size(), 1u);
    EXPECT_TRUE(agent->log().contains("has not answered a SET"));
    expectUnchanged();
}

TEST_F(AgentSet, ALateReplyIsDropped)
{
    start(200);
    application->onQuestion = [](const FakeApplication::Request&) {};
    EXPECT_EQ(reason(tool->set(integer("5.1", "2"))), QStringLiteral("resourceUnavailable"));

    application->answer(application->questions().front(), 0);
    EXPECT_TRUE(agent->waitForLog("came too late"));

    // An acceptance of the first question must not count for the second.
    application->onQuestion = [&](const FakeApplication::Request&) {
        application->answer(application->questions().front(), 0);
    };
    EXPECT_EQ(reason(tool->set(integer("5.1", "3"))), QStringLiteral("resourceUnavailable"));
    EXPECT_EQ(application->questions().size(), 2u);
    EXPECT_TRUE(agent->waitForLog("came too late", 2));
    expectUnchanged();
    EXPECT_TRUE(application->isConnected());
}

TEST_F(AgentSet, AConnectionLostDuringASetReturnsResourceUnavailableAtOnce)
{
    start();
    application->onQuestion = [&](const FakeApplication::Request&) { application->close(); };
    EXPECT_EQ(reason(tool->set(integer("5.1", "2"))), QStringLiteral("resourceUnavailable"));
    EXPECT_FALSE(agent->log().contains("has not answered a SET")) << "before the SET's own time-out";
}

// The manager was told noError, the other application was changed, and nobody had the lost one's value.
TEST_F(AgentSet, AnApplicationThatEndsWithItsAnswerLeavesAllUnchanged)
{
    start();
    FakeApplication other(agent->applicationPort());
    other.publish("6.1", 1);
    ASSERT_TRUE(tool->waitFor(full("6.1"), QStringLiteral("1")));
    other.onQuestion = [&](const FakeApplication::Request& question) {
        other.answer(question, 0);
        other.close();
    };
    EXPECT_EQ(reason(tool->set(integer("5.1", "2") + integer("6.1", "2"))),
              QStringLiteral("resourceUnavailable"));
    expectUnchanged();
    EXPECT_EQ(tool->get(full("6.1")), QStringLiteral("1"));
}

TEST_F(AgentSet, ACommittedValueEndsWithItsApplication)
{
    start();
    EXPECT_EQ(tool->set(integer("5.1", "2")).exitCode, 0);
    EXPECT_EQ(tool->get(full("5.1")), QStringLiteral("2"));
    application->close();
    EXPECT_TRUE(tool->waitFor(full("5.1"), QStringLiteral("1")));
}

TEST_F(AgentSet, ACellUnsetDuringASetReturnsResourceUnavailable)
{
    start();
    application->onQuestion = [&](const FakeApplication::Request& question) {
        application->unset("5.1");
        application->answer(question, 0);
    };
    EXPECT_EQ(reason(tool->set(integer("5.1", "2"))), QStringLiteral("resourceUnavailable"));
    EXPECT_TRUE(application->commits().empty());
}

TEST_F(AgentSet, ValuesAreReceivedDuringAPendingSet)
{
    start();
    FakeApplication other(agent->applicationPort());
    QTimer poll;
    application->onQuestion = [&](const FakeApplication::Request& question) {
        other.publish("6.1", 66);
        QObject::connect(&poll, &QTimer::timeout, &poll, [this, question, &poll] {
            if (!agent->log().contains("32473.6.1 = 66"))
                return;
            poll.stop();
            application->answer(question, 0);
        });
        poll.start(5);
    };
    EXPECT_EQ(tool->set(integer("5.1", "2")).exitCode, 0);
}

TEST_F(AgentSet, AGetAfterAPendingSetWaitsForIt)
{
    start(500);
    application->onQuestion = [](const FakeApplication::Request&) {};
    QString got;
    QTimer::singleShot(0, application.get(), [&] {
        ASSERT_TRUE(support::runUntil([&] { return !application->questions().empty(); }));
        got = tool->get(full("5.1"));
    });
    EXPECT_EQ(reason(tool->set(integer("5.1", "2"))), QStringLiteral("resourceUnavailable"));
    EXPECT_TRUE(support::runUntil([&] { return got == QStringLiteral("1"); })) << qPrintable(got);
}

TEST_F(AgentSet, ManagersMaySetAtTheSameTime)
{
    start();
    std::vector<std::unique_ptr<QProcess>> managers;
    for (int i = 0; i < 4; ++i) {
        managers.push_back(std::make_unique<QProcess>());
        managers.back()->start(QStringLiteral("snmpset"),
                               {QStringLiteral("-v2c"), QStringLiteral("-c"), QStringLiteral("private"),
                                QStringLiteral("-m"), QString(), QStringLiteral("-r0"),
                                QStringLiteral("-t60"), i % 2 ? agent->udpAddress() : agent->tcpAddress(),
                                full("5.1"), QStringLiteral("i"), QString::number(100 + i)});
    }
    for (const auto& manager : managers) {
        EXPECT_TRUE(support::runUntil([&] { return manager->state() == QProcess::NotRunning; }));
        EXPECT_EQ(manager->exitCode(), 0) << manager->readAllStandardError().constData();
    }
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 4; }));
    EXPECT_EQ(tool->get(full("5.1")).toStdString(), application->commits().back().value);
}

TEST_F(AgentSet, AManagerMayLeaveDuringItsSet)
{
    start();
    FakeApplication::Request question;
    application->onQuestion = [&](const FakeApplication::Request& asked) { question = asked; };
    QProcess manager;
    manager.start(QStringLiteral("snmpset"),
                  {QStringLiteral("-v2c"), QStringLiteral("-c"), QStringLiteral("private"),
                   QStringLiteral("-m"), QString(), QStringLiteral("-t60"), agent->tcpAddress(), full("5.1"),
                   QStringLiteral("i"), QStringLiteral("2")});
    ASSERT_TRUE(support::runUntil([&] { return !application->questions().empty(); }));
    manager.kill();
    ASSERT_TRUE(support::runUntil([&] { return manager.state() == QProcess::NotRunning; }));
    application->answer(question, 0);
    EXPECT_TRUE(tool->waitFor(full("5.1"), QStringLiteral("2")));
    EXPECT_EQ(agent->stop(), 0);
}

TEST_F(AgentSet, VarbindsOfTwoApplicationsAreCommittedTogether)
{
    start();
    FakeApplication other(agent->applicationPort());
    other.publish("6.1", std::string("old"));
    ASSERT_TRUE(tool->waitFor(full("6.1"), QStringLiteral("\"old\"")));
    EXPECT_EQ(tool->set(integer("5.1", "2") + text("6.1", "new") + text("5.2", "new")).exitCode, 0);
    ASSERT_TRUE(
        support::runUntil([&] { return application->commits().size() == 2 && other.commits().size() == 1; }));
    EXPECT_EQ(tool->get(full("5.1")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(full("5.2")), QStringLiteral("\"new\""));
    EXPECT_EQ(tool->get(full("6.1")), QStringLiteral("\"new\""));
}

TEST_F(AgentSet, OneRefusalLeavesAllVarbindsUnchanged)
{
    start();
    FakeApplication other(agent->applicationPort());
    other.publish("6.1", 1);
    ASSERT_TRUE(tool->waitFor(full("6.1"), QStringLiteral("1")));
    other.onQuestion = [&](const FakeApplication::Request& question) { other.answer(question, 1); };
    const SnmpTool::Result result = tool->set(integer("5.1", "2") + integer("6.1", "2") + text("5.2", "new"));
    EXPECT_EQ(reason(result), QStringLiteral("wrongValue"));
    EXPECT_TRUE(result.err.contains(QStringLiteral("32473.6.1")) ||
                result.err.contains(QStringLiteral("exampleEnterprise.6.1")))
        << qPrintable(result.err);
    expectUnchanged();
    EXPECT_EQ(tool->get(full("6.1")), QStringLiteral("1"));
    EXPECT_TRUE(other.commits().empty());
}

TEST_F(AgentSet, NoApplicationIsAskedIfOneVarbindCannotBeSet)
{
    start();
    EXPECT_EQ(reason(tool->set(integer("5.1", "2") + integer("5.2", "2"))), QStringLiteral("wrongType"));
    EXPECT_TRUE(application->questions().empty());
    expectUnchanged();
}

TEST_F(AgentSet, OneMissingReplyFailsTheWholeSet)
{
    start(300);
    FakeApplication other(agent->applicationPort());
    other.publish("6.1", 1);
    ASSERT_TRUE(tool->waitFor(full("6.1"), QStringLiteral("1")));
    other.onQuestion = [](const FakeApplication::Request&) {};
    EXPECT_EQ(reason(tool->set(integer("5.1", "2") + integer("6.1", "2"))),
              QStringLiteral("resourceUnavailable"));
    expectUnchanged();
    EXPECT_TRUE(other.commits().empty());
}

TEST_F(AgentSet, TheAgentShutsDownCleanlyDuringAPendingSet)
{
    start();
    application->onQuestion = [](const FakeApplication::Request&) {};
    QProcess manager;
    manager.start(QStringLiteral("snmpset"),
                  {QStringLiteral("-v2c"), QStringLiteral("-c"), QStringLiteral("private"),
                   QStringLiteral("-m"), QString(), QStringLiteral("-r0"), QStringLiteral("-t60"),
                   agent->udpAddress(), full("5.1"), QStringLiteral("i"), QStringLiteral("2")});
    ASSERT_TRUE(support::runUntil([&] { return !application->questions().empty(); }));
    const LoadFreeTimer timer({agent->processId()});
    EXPECT_EQ(agent->stop(), 0);
    EXPECT_LT(timer.elapsedMs(), 1'000);
    EXPECT_TRUE(application->commits().empty());
    manager.kill();
    manager.waitForFinished();
}
