// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A manager over TCP that takes its answers slowly, or not at all.

#include <gtest/gtest.h>

#include <QTcpSocket>

#include <string>

#include "support/AgentProcess.h"
#include "support/Deadline.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::runUntil;
using support::SnmpTool;

namespace {

constexpr int cells = 40;
constexpr int textBytes = 50'000;
constexpr int patienceMs = 5000;    // five times the agent's
constexpr int requests = 20;        // their answers take more than the system keeps for a connection
constexpr int readAtOnce = 262'144; // in less than a second even on a busy machine

QByteArray tagged(char tag, const QByteArray& content)
{
    return tag + QByteArray(1, static_cast<char>(content.size())) + content;
}

/// GETBULK of all cells, over SNMPv2c as "public".
QByteArray bulkRequest()
{
    const QByteArray zero = tagged(2, QByteArray(1, 0));
    const QByteArray enterprise = tagged(6, QByteArray::fromHex("2b0601040181fd59"));
    const QByteArray varbinds = tagged(0x30, tagged(0x30, enterprise + tagged(5, {})));
    const QByteArray pdu = zero + zero + tagged(2, QByteArray(1, cells)) + varbinds;
    return tagged(0x30, tagged(2, QByteArray(1, 1)) + tagged(4, "public") + tagged('\xa5', pdu));
}

/// The size of the message at the front, with its header. 0 if the header is not complete.
int messageSize(const QByteArray& bytes)
{
    if (bytes.size() < 2)
        return 0;
    const int lengthBytes = bytes[1] & 0x80 ? bytes[1] & 0x7f : 0;
    if (bytes.size() < 2 + lengthBytes)
        return 0;
    int length = lengthBytes == 0 ? bytes[1] : 0;
    for (int i = 0; i < lengthBytes; ++i)
        length = length * 256 + static_cast<unsigned char>(bytes[2 + i]);
    return 2 + lengthBytes + length;
}

class AgentSlowManager : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        application = std::make_unique<FakeApplication>(agent.applicationPort());
        for (int cell = 1; cell <= cells; ++cell)
            application->publish("8." + std::to_string(cell), std::string(textBytes, 'x'));
        application->publish("9.1", 1);
        ASSERT_TRUE(SnmpTool(agent.udpAddress()).waitFor(support::full("9.1"), QStringLiteral("1")));
        manager.setReadBufferSize(readAtOnce);
        manager.connectToHost(QStringLiteral("127.0.0.1"), agent.snmpPort());
        ASSERT_TRUE(manager.waitForConnected(support::deadlineMs));
    }

    void askForMuch()
    {
        manager.write(bulkRequest().repeated(requests));
        ASSERT_TRUE(manager.waitForBytesWritten(support::deadlineMs));
    }

    AgentProcess agent{QStringList()};
    std::unique_ptr<FakeApplication> application;
    QTcpSocket manager;
};

} // namespace

TEST_F(AgentSlowManager, GetsWholeAnswers)
{
    askForMuch();
    QByteArray bytes;
    for (int answer = 0; answer < requests; ++answer) {
        const auto isWhole = [&] {
            bytes += manager.read(readAtOnce);
            return messageSize(bytes) > 0 && bytes.size() >= messageSize(bytes);
        };
        ASSERT_TRUE(runUntil(isWhole)) << "answer " << answer << " has " << bytes.size() << " bytes";
        ASSERT_EQ(bytes.at(0), 0x30) << "answer " << answer;
        ASSERT_EQ(bytes.left(messageSize(bytes)).count('x'), cells * textBytes);
        bytes.remove(0, messageSize(bytes));
    }
    EXPECT_TRUE(bytes.isEmpty());
}

TEST_F(AgentSlowManager, IsDisconnectedIfItReadsNothing)
{
    askForMuch();
    EXPECT_EQ(SnmpTool(agent.udpAddress()).get(support::full("9.1")), QStringLiteral("1"))
        << "others are served meanwhile";
    runUntil([] { return false; }, patienceMs); // nothing shows the end before the manager reads
    manager.setReadBufferSize(0);
    EXPECT_TRUE(runUntil([&] {
        manager.readAll();
        return manager.state() == QAbstractSocket::UnconnectedState;
    }));
}
