// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <unistd.h>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::enterprise;
using support::FakeApplication;
using support::full;
using support::SnmpTool;

namespace {

// Of VIGIL-AGENT-MIB.
constexpr int scalars = 15;
constexpr int columns = 12;
constexpr int healthScalars = 8;

const QString dateAndTime = QStringLiteral("20\\d\\d-\\d+-\\d+,\\d+:\\d+:\\d+\\.\\d,\\+0:0");

QString scalar(const char* name)
{
    return QStringLiteral("VIGIL-AGENT-MIB::vigilAgent%1.0").arg(QLatin1String(name));
}

QString column(const char* name, int row)
{
    return QStringLiteral("VIGIL-AGENT-MIB::vigilAgentConnection%1.%2").arg(QLatin1String(name)).arg(row);
}

bool isMatch(const QString& pattern, const QString& text)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

/// A standalone agent with two applications. The community "private" may write.
class AgentMib : public testing::Test
{
protected:
    void SetUp() override { start({}); }

    void start(const QStringList& arguments, const QByteArray& directive = {})
    {
        QFile file(m_directory.filePath(QStringLiteral("agent.conf")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("rwcommunity private 127.0.0.1\n" + directive);
        file.close();
        agent = std::make_unique<AgentProcess>(
            QStringList{QStringLiteral("--config"), file.fileName(), QStringLiteral("--verbose"),
                        QStringLiteral("--set-timeout"), QStringLiteral("60000")} +
            arguments);
        age.start();
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        tool =
            std::make_unique<SnmpTool>(agent->udpAddress(), SnmpTool::community(QStringLiteral("private")));
        m_connections = 0;
        first = connectApplication();
        second = connectApplication();
    }

    std::unique_ptr<FakeApplication> connectApplication()
    {
        auto application = std::make_unique<FakeApplication>(agent->applicationPort());
        EXPECT_TRUE(agent->waitForLog("application " + QByteArray::number(++m_connections) + " ("));
        return application;
    }

    /// Waits until the agent has handled everything the application has sent.
    void settle(FakeApplication& application)
    {
        application.publish("999.1", ++m_marks);
        ASSERT_TRUE(tool->waitFor(full("999.1"), QString::number(m_marks))) << agent->log().constData();
    }

    void set(const char* relative, int value)
    {
        tool->set({full(relative), QStringLiteral("i"), QString::number(value)});
    }

    QElapsedTimer age; ///< of the agent, or a bit more
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<SnmpTool> tool;
    std::unique_ptr<FakeApplication> first;
    std::unique_ptr<FakeApplication> second;

private:
    QTemporaryDir m_directory;
    int m_connections = 0;
    int m_marks = 0;
};

} // namespace

TEST_F(AgentMib, HasVersionUpTimeAndTheNumberOfCells)
{
    first->publish("5.1", 1);
    first->publish("5.2", 2);
    settle(*second);
    ASSERT_TRUE(tool->waitFor(scalar("Cells"), QStringLiteral("3")));
    EXPECT_EQ(QStringLiteral("vigil-agent %1\n").arg(tool->get(scalar("Version"))),
              QString::fromUtf8(AgentProcess::run({QStringLiteral("--version")}).out));
    const QString upTime =
        tool->run(QStringLiteral("snmpget"), {scalar("UpTime")}, {QStringLiteral("-OvtU")}).out;
    EXPECT_GT(upTime.toInt(), 0) << qPrintable(upTime);
    EXPECT_LE(upTime.toInt(), age.elapsed() / 10);
    EXPECT_EQ(tool->get(scalar("NotificationsSent")), QStringLiteral("0")) << "there is no receiver";
}

TEST_F(AgentMib, CountsSetsByTheirOutcome)
{
    first->publish("5.1", 1);
    settle(*first);
    set("5.1", 2);
    first->onQuestion = [this](const FakeApplication::Request& question) { first->answer(question, 1); };
    set("5.1", 3);
    set("5.2", 4); // the agent itself refuses: no such cell
    EXPECT_EQ(tool->get(scalar("SetsForwarded")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(scalar("SetsRefused")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(scalar("SetsTimedOut")), QStringLiteral("0"));
}

TEST_F(AgentMib, CountsSetsWithoutAReply)
{
    start({QStringLiteral("--set-timeout"), QStringLiteral("200")});
    first->publish("5.1", 1);
    settle(*first);
    first->onQuestion = [](const FakeApplication::Request&) {};
    set("5.1", 2);
    EXPECT_EQ(tool->get(scalar("SetsForwarded")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(scalar("SetsRefused")), QStringLiteral("0"));
    EXPECT_EQ(tool->get(scalar("SetsTimedOut")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(scalar("SetsFailedAtOnce")), QStringLiteral("0"));
}

TEST_F(AgentMib, CountsSetsThatFailAtOnceAfterATimeout)
{
    start({QStringLiteral("--set-timeout"), QStringLiteral("200")});
    first->publish("5.1", 1);
    first->publish("5.2", 1);
    second->publish("6.1", 1);
    settle(*second);
    settle(*first);
    for (FakeApplication* application : {first.get(), second.get()})
        application->onQuestion = [](const FakeApplication::Request&) {};
    set("5.1", 2);
    tool->set({full("5.1"), QStringLiteral("i"), QStringLiteral("3"), full("5.2"), QStringLiteral("i"),
               QStringLiteral("3")});
    set("6.1", 2); // another application's
    set("6.2", 2); // no such cell
    EXPECT_EQ(tool->get(scalar("SetsFailedAtOnce")), QStringLiteral("1")) << agent->log().constData();
    EXPECT_EQ(tool->get(scalar("SetsForwarded")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(scalar("SetsTimedOut")), QStringLiteral("2"));
}

TEST_F(AgentMib, ReportsTheMemoryOfApplicationsAndItsLimit)
{
    start({QStringLiteral("--max-memory"), QStringLiteral("17")});
    EXPECT_EQ(tool->get(scalar("MemoryLimit")), QString::number(17 * 1024));
    EXPECT_EQ(tool->get(scalar("Memory")), QStringLiteral("0"));
    constexpr size_t kilobytes = 60;
    first->publish("5.1", std::string(kilobytes * 1024, 'x'));
    settle(*second);
    ASSERT_TRUE(tool->waitFor(scalar("Cells"), QStringLiteral("2")));
    const size_t memory = tool->get(scalar("Memory")).toUInt();
    EXPECT_GE(memory, kilobytes);
    EXPECT_LT(memory, 2 * kilobytes);
    first->unset("5.1");
    EXPECT_TRUE(tool->waitFor(scalar("Memory"), QStringLiteral("0")));
}

TEST_F(AgentMib, HasARowForEachApplication)
{
    first->publish("5.1", 1);
    first->publish("5.1", 2);
    first->publish("", 3);
    settle(*first);
    ASSERT_TRUE(tool->waitFor(column("Frames", 1), QStringLiteral("4")));
    EXPECT_EQ(tool->get(column("Address", 1)), QStringLiteral("127.0.0.1"));
    EXPECT_EQ(tool->get(column("User", 1)), QString::number(geteuid()));
    EXPECT_EQ(tool->get(column("Process", 1)), QString::number(getpid()));
    EXPECT_EQ(tool->get(column("Program", 1)), QStringLiteral("agent_end_to_en")) << "the first 15 bytes";
    const QString name = QStringLiteral("application 1 (agent_end_to_en, uid %1, pid %2, 127.0.0.1:%3)")
                             .arg(geteuid())
                             .arg(getpid())
                             .arg(tool->get(column("Port", 1)));
    EXPECT_TRUE(agent->log().contains(name.toUtf8())) << agent->log().constData();
    EXPECT_EQ(tool->get(column("Name", 1)), name);
    EXPECT_EQ(tool->get(column("State", 1)), QStringLiteral("1"));
    EXPECT_TRUE(isMatch(dateAndTime, tool->get(column("Since", 1))))
        << qPrintable(tool->get(column("Since", 1)));
    EXPECT_EQ(tool->get(column("Cells", 1)), QStringLiteral("2"));
    EXPECT_EQ(tool->get(column("RecordsRefused", 1)), QStringLiteral("1"));
    EXPECT_TRUE(isMatch(dateAndTime, tool->get(column("LastFrame", 1))));

    EXPECT_EQ(tool->get(column("Cells", 2)), QStringLiteral("0"));
    EXPECT_EQ(tool->get(column("Frames", 2)), QStringLiteral("0"));
    EXPECT_EQ(tool->get(column("LastFrame", 2)), QStringLiteral("0-0-0,0:0:0.0")) << "before the first frame";
    EXPECT_TRUE(tool->get(column("State", 3)).startsWith(QStringLiteral("No Such Instance")));
}

TEST_F(AgentMib, TheRowOfALostApplicationStaysOnlyWhileItHasCells)
{
    first->publish("5.1", 1);
    settle(*first);
    first->close();
    second->close();
    EXPECT_TRUE(tool->waitFor(column("State", 1), QStringLiteral("2")));
    EXPECT_TRUE(
        tool->waitFor(column("State", 2), QStringLiteral("No Such Instance currently exists at this OID")));
    EXPECT_EQ(tool->get(column("Cells", 1)), QStringLiteral("2"));
}

TEST_F(AgentMib, SnmptablePrintsNamesOnly)
{
    first->publish("5.1", 1);
    settle(*first);
    const SnmpTool::Result result = tool->run(
        QStringLiteral("snmptable"), {QStringLiteral("VIGIL-AGENT-MIB::vigilAgentConnectionTable")},
        {QStringLiteral("-Cl"), QStringLiteral("-Ci"), QStringLiteral("-CB"), QStringLiteral("-Cb")});
    EXPECT_EQ(result.err, QString());
    const QStringList lines = result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << qPrintable(result.out);
    EXPECT_EQ(lines[1].simplified(),
              QStringLiteral("index Address Port State Since Cells Frames RecordsRefused LastFrame "
                             "User Process Program Name"));
    EXPECT_TRUE(
        isMatch(QStringLiteral("1 127\\.0\\.0\\.1 \\d+ connected %1 2 2 0 %1 \\d+ \\d+ \\S+ application 1 .*")
                    .arg(dateAndTime),
                lines[2].simplified()))
        << qPrintable(lines[2]);
    EXPECT_TRUE(isMatch(
        QStringLiteral(
            "2 127\\.0\\.0\\.1 \\d+ connected %1 0 0 0 0-0-0,0:0:0\\.0 \\d+ \\d+ \\S+ application 2 .*")
            .arg(dateAndTime),
        lines[3].simplified()))
        << qPrintable(lines[3]);
}

TEST_F(AgentMib, AWalkReadsItBetweenItsNeighbours)
{
    first->publish("127.3.1.200.4.9", 1);
    first->publish("127.3.1.200.6", 2);
    settle(*first);
    for (const char* program : {"snmpwalk", "snmpbulkwalk"}) {
        const QStringList lines = tool->walk(enterprise, QLatin1String(program));
        ASSERT_EQ(lines.size(), 1 + scalars + 2 * columns + healthScalars + 3)
            << program << '\n'
            << qPrintable(lines.join(QLatin1Char('\n')));
        EXPECT_EQ(lines[0], enterprise + QStringLiteral(".127.3.1.200.4.9 1"));
        for (int object = 1; object <= scalars; ++object)
            EXPECT_TRUE(
                lines[object].startsWith(enterprise + QStringLiteral(".127.3.1.200.5.1.%1.0 ").arg(object)));
        for (int cell = 0; cell < 2 * columns; ++cell)
            EXPECT_TRUE(lines[1 + scalars + cell].startsWith(
                enterprise + QStringLiteral(".127.3.1.200.5.2.1.%1.%2 ").arg(cell / 2 + 2).arg(cell % 2 + 1)))
                << qPrintable(lines[1 + scalars + cell]);
        for (int object = 1; object <= healthScalars; ++object)
            EXPECT_TRUE(lines[scalars + 2 * columns + object].startsWith(
                enterprise + QStringLiteral(".127.3.1.200.5.3.%1.0 ").arg(object)));
        EXPECT_EQ(lines[lines.size() - 3], enterprise + QStringLiteral(".127.3.1.200.6 2"));
        EXPECT_EQ(lines[lines.size() - 2], enterprise + QStringLiteral(".999.1 1"));
    }
}

TEST_F(AgentMib, AGetNextOfTheLastRowGoesOnWithTheNextColumn)
{
    const SnmpTool::Result result =
        tool->run(QStringLiteral("snmpgetnext"),
                  {column("Address", 2), column("State", 2), column("Name", 2)}, {QStringLiteral("-OQse")});
    EXPECT_TRUE(isMatch(QStringLiteral("vigilAgentConnectionPort.1 = \\d+\nvigilAgentConnectionSince.1 = .*\n"
                                       "vigilAgentChecks.0 = 0\n?"),
                        result.out))
        << qPrintable(result.out);
}

TEST_F(AgentMib, IsReadOnly)
{
    const SnmpTool::Result scalarResult =
        tool->set({scalar("Version"), QStringLiteral("s"), QStringLiteral("2")});
    EXPECT_TRUE(scalarResult.err.contains(QStringLiteral("notWritable"))) << qPrintable(scalarResult.err);
    const SnmpTool::Result columnResult =
        tool->set({column("State", 1), QStringLiteral("i"), QStringLiteral("2")});
    EXPECT_TRUE(columnResult.err.contains(QStringLiteral("notWritable"))) << qPrintable(columnResult.err);
}

TEST_F(AgentMib, ApplicationsCannotPublishInIt)
{
    for (const char* id :
         {"127.3.1.200.5", "127.3.1.200.5.1.3.0", "127.3.1.200.5.2.1.4.1", "127.3.1.200.5.9"}) {
        first->publish(id, 7);
        first->publish(id, 8);
    }
    settle(*first);
    EXPECT_TRUE(first->isConnected());
    EXPECT_EQ(agent->log().count("one of the agent's own objects"), 4) << agent->log().constData();
    EXPECT_EQ(tool->get(scalar("Cells")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(column("State", 1)), QStringLiteral("1"));
    EXPECT_EQ(tool->get(column("RecordsRefused", 1)), QStringLiteral("8"));
    EXPECT_EQ(tool->walk(enterprise).size(), scalars + 2 * columns + healthScalars + 2)
        << "the end has a line, too";
}

TEST_F(AgentMib, CountsRefusedConnections)
{
    start({QStringLiteral("--max-connections"), QStringLiteral("2")});
    first->unset("5"); // a silent connection would make room
    settle(*first);
    settle(*second);
    for (int refused = 1; refused <= 2; ++refused) {
        FakeApplication third(agent->applicationPort());
        ASSERT_TRUE(third.waitForDisconnect());
        EXPECT_TRUE(tool->waitFor(scalar("ConnectionsRefused"), QString::number(refused)));
    }
    EXPECT_EQ(tool->get(scalar("ProtocolErrors")), QStringLiteral("0"));
    EXPECT_TRUE(first->isConnected());
    EXPECT_TRUE(second->isConnected());
}

TEST_F(AgentMib, CountsProtocolErrors)
{
    first->sendBytes("no frame at all, but long enough for the header of one");
    EXPECT_TRUE(tool->waitFor(scalar("ProtocolErrors"), QStringLiteral("1"))) << agent->log().constData();
    second->skipFrameNumber();
    second->publish("5.1", 1);
    EXPECT_TRUE(tool->waitFor(scalar("ProtocolErrors"), QStringLiteral("2"))) << agent->log().constData();
    EXPECT_EQ(tool->get(scalar("ConnectionsRefused")), QStringLiteral("0"));
    EXPECT_EQ(tool->get(scalar("NotificationsDropped")), QStringLiteral("0"));
    EXPECT_EQ(tool->get(scalar("Rejoins")), QStringLiteral("0"));
}
