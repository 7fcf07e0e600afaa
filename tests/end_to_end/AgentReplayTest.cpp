// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// SNMPv3 proves who sent a SET, but it accepts the same datagram again for 150 seconds.

#include <gtest/gtest.h>

#include <QFile>
#include <QNetworkDatagram>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <memory>
#include <unistd.h>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/FreePort.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::SnmpTool;

namespace {

/// Passes datagrams between a manager and the agent on, and records the manager's.
class Eavesdropper
{
public:
    explicit Eavesdropper(quint16 agentPort) : m_agentPort(agentPort)
    {
        support::bindToFreePort(m_front);
        support::bindToFreePort(m_back);
        QObject::connect(&m_front, &QUdpSocket::readyRead, &m_front, [this] { passToAgent(); });
        QObject::connect(&m_back, &QUdpSocket::readyRead, &m_back, [this] { passToManager(); });
    }

    QString address() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_front.localPort()); }

    /// The manager's last request.
    const QByteArray& recorded() const { return m_recorded; }

    void send(const QByteArray& request)
    {
        m_back.writeDatagram(request, QHostAddress(QHostAddress::LocalHost), m_agentPort);
    }

    int answers() const { return m_answers; }
    void setAgentPort(quint16 port) { m_agentPort = port; }

private:
    void passToAgent()
    {
        while (m_front.hasPendingDatagrams()) {
            const QNetworkDatagram datagram = m_front.receiveDatagram();
            m_managerPort = static_cast<quint16>(datagram.senderPort());
            m_recorded = datagram.data();
            send(m_recorded);
        }
    }

    void passToManager()
    {
        while (m_back.hasPendingDatagrams()) {
            ++m_answers;
            m_front.writeDatagram(m_back.receiveDatagram().data(), QHostAddress(QHostAddress::LocalHost),
                                  m_managerPort);
        }
    }

    quint16 m_agentPort;
    quint16 m_managerPort = 0;
    QUdpSocket m_front;
    QUdpSocket m_back;
    QByteArray m_recorded;
    int m_answers = 0;
};

/// An agent whose SNMPv3 user "writer" may set the application's integer at 5.1.
class AgentReplay : public testing::Test
{
protected:
    void SetUp() override
    {
        QFile file(directory.filePath(QStringLiteral("agent.conf")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("createUser writer SHA writerAuthPass AES writerPrivPass\nrwuser writer priv\n");
    }

    void start(const QStringList& arguments = {})
    {
        agent = std::make_unique<AgentProcess>(
            QStringList{QStringLiteral("--config"), directory.filePath(QStringLiteral("agent.conf"))} +
            arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        if (!eavesdropper)
            eavesdropper = std::make_unique<Eavesdropper>(agent->snmpPort());
        eavesdropper->setAgentPort(agent->snmpPort());
        manager = std::make_unique<SnmpTool>(
            eavesdropper->address(),
            QStringLiteral("-v3 -l authPriv -u writer -a SHA -A writerAuthPass -x AES -X writerPrivPass")
                .split(QLatin1Char(' ')));
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish("5.1", 1);
        ASSERT_TRUE(manager->waitFor(full("5.1"), QStringLiteral("1")));
    }

    bool set(int value)
    {
        return manager->set({full("5.1"), QStringLiteral("i"), QString::number(value)}).exitCode == 0;
    }

    QString value() { return manager->get(full("5.1")); }

    /// The manager's reply may arrive before the application has read the last commit.
    bool waitForCommits(size_t count)
    {
        support::runUntil([&] { return application->commits().size() >= count; });
        return application->commits().size() == count;
    }

    /// Even root cannot replace the file then: it is open here, and its folder has gone.
    void makeReadOnly(const QString& name)
    {
        QTemporaryDir folder;
        readOnly.setFileName(folder.filePath(name));
        const QString path = directory.filePath(name);
        ASSERT_TRUE(QFile::rename(path, readOnly.fileName()));
        ASSERT_TRUE(readOnly.open(QIODevice::ReadOnly));
        ASSERT_TRUE(QFile::link(QStringLiteral("/proc/%1/fd/%2").arg(getpid()).arg(readOnly.handle()), path));
    }

    const QTemporaryDir directory;
    QFile readOnly;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<Eavesdropper> eavesdropper;
    std::unique_ptr<SnmpTool> manager;
    std::unique_ptr<FakeApplication> application;
};

QStringList stateIn(const QTemporaryDir& directory)
{
    return {QStringLiteral("--state-directory"), directory.path()};
}

} // namespace

TEST_F(AgentReplay, ASetIsNotExecutedTwice)
{
    start();
    ASSERT_TRUE(set(2));
    const QByteArray recorded = eavesdropper->recorded();
    ASSERT_TRUE(set(3));
    for (int i = 0; i < 3; ++i)
        eavesdropper->send(recorded);
    EXPECT_TRUE(agent->waitForLog("a copy of a SET by user writer is dropped"));
    EXPECT_EQ(value(), QStringLiteral("3"));
    EXPECT_TRUE(waitForCommits(2)) << application->commits().size();
    EXPECT_EQ(agent->log().count("a copy of a SET"), 1) << agent->log().constData();
}

TEST_F(AgentReplay, TheSameSetOfAManagerIsExecutedAgain)
{
    start();
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(set(2));
    EXPECT_TRUE(waitForCommits(3)) << application->commits().size();
}

TEST_F(AgentReplay, ARestartDoesNotMakeARecordedSetValidAgain)
{
    start(stateIn(directory));
    ASSERT_TRUE(set(2));
    const QByteArray recorded = eavesdropper->recorded();
    ASSERT_EQ(agent->stop(), 0);
    start(stateIn(directory));
    const int answersBefore = eavesdropper->answers();
    eavesdropper->send(recorded);
    ASSERT_TRUE(support::runUntil([&] { return eavesdropper->answers() > answersBefore; })); // a report
    EXPECT_EQ(value(), QStringLiteral("1"));
    EXPECT_TRUE(application->questions().empty());
}

// The count of restarts could not be saved. The next run had the same one and took SETs recorded in this run.
TEST_F(AgentReplay, ARestartWithAFullDiskDoesNotEither)
{
    start(stateIn(directory));
    ASSERT_EQ(agent->stop(), 0);
    makeReadOnly(QStringLiteral("engine"));
    start(stateIn(directory));
    EXPECT_TRUE(agent->waitForLog("cannot write the state file"));
    ASSERT_TRUE(set(2));
    const QByteArray recorded = eavesdropper->recorded();
    ASSERT_EQ(agent->stop(), 0);
    start(stateIn(directory));
    const int answersBefore = eavesdropper->answers();
    eavesdropper->send(recorded);
    ASSERT_TRUE(support::runUntil([&] { return eavesdropper->answers() > answersBefore; }));
    EXPECT_EQ(value(), QStringLiteral("1"));
    EXPECT_TRUE(application->questions().empty());
}
