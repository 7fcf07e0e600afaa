// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QtEndian>

#include "base/wire/FrameHeader.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpString.h"
#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::enterprise;
using support::FakeApplication;
using support::full;
using support::SnmpTool;

namespace {

QByteArray intPayload(const std::string& oid)
{
    base::SnmpInt record;
    record.oid = oid;
    record.value.setValue(7);
    QByteArray payload;
    record.serialize(payload);
    return payload;
}

QByteArray frame(quint64 counter, const QByteArray& payload)
{
    base::FrameHeader header;
    header.messageCounter = counter;
    return header.toBytes(payload.size()) + payload;
}

class AgentConnections : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        tool = std::make_unique<SnmpTool>(agent.udpAddress());
        bystander = std::make_unique<FakeApplication>(agent.applicationPort());
        offender = std::make_unique<FakeApplication>(agent.applicationPort());
        bystander->publish("1.1", 1);
        offender->publish("2.1", 2);
        ASSERT_TRUE(tool->waitFor(full("1.1"), QStringLiteral("1")));
        ASSERT_TRUE(tool->waitFor(full("2.1"), QStringLiteral("2")));
    }

    /// The offender is disconnected with one line in the log. The cells and the bystander are as before.
    void expectOnlyTheOffenderIsDisconnected()
    {
        EXPECT_TRUE(offender->waitForDisconnect());
        EXPECT_TRUE(agent.waitForLog("has disconnected"));
        EXPECT_EQ(agent.log().count("is disconnected: "), 1) << agent.log().constData();
        EXPECT_TRUE(bystander->isConnected());
        const QStringList cells = tool->walk(enterprise, QStringLiteral("snmpwalk"));
        EXPECT_EQ(cells.mid(0, 2), (QStringList{enterprise + QStringLiteral(".1.1 1"),
                                                enterprise + QStringLiteral(".2.1 2")}));
        EXPECT_FALSE(cells.join(QLatin1Char(' ')).contains(full("2.2")));
    }

    AgentProcess agent;
    std::unique_ptr<SnmpTool> tool;
    std::unique_ptr<FakeApplication> bystander;
    std::unique_ptr<FakeApplication> offender;
};

} // namespace

TEST_F(AgentConnections, AWrongMagicEndsTheConnection)
{
    offender->sendBytes(QByteArray(64, 'x'));
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, ATooSmallFrameLengthEndsTheConnection)
{
    QByteArray bytes = frame(2, intPayload("2.2"));
    qToBigEndian<qint64>(25, bytes.data() + 8);
    offender->sendBytes(bytes);
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, ATooLargeFrameLengthEndsTheConnectionBeforeTheFrameArrives)
{
    QByteArray bytes = frame(2, QByteArray());
    qToBigEndian<qint64>(Q_INT64_C(0x7fffffffffffffff), bytes.data() + 8);
    offender->sendBytes(bytes.left(16));
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, AGapInTheFrameNumbersEndsTheConnection)
{
    offender->skipFrameNumber();
    offender->publish("2.2", 7);
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, ARecordCutShortEndsTheConnectionAndCreatesNoCell)
{
    QByteArray payload = intPayload("2.22.222");
    payload.chop(12 + 3); // the value and the end of the identifier
    offender->sendFrame(base::SnmpIntType, base::PlainValue, payload);
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, AnEmptyRecordEndsTheConnection)
{
    offender->sendFrame(base::SnmpIntType, base::PlainValue, QByteArray());
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, ANonNumericIdentifierEndsTheConnectionAndCreatesNoCell)
{
    offender->sendFrame(base::SnmpIntType, base::PlainValue, intPayload("2.x.3"));
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, AnUnknownDataTypeEndsTheConnection)
{
    offender->sendFrame(4, base::PlainValue, intPayload("2.2"));
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, AMismatchOfDataTypeAndCallbackIdEndsTheConnection)
{
    offender->sendFrame(base::SnmpIntType, base::Validation, intPayload("2.2"));
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, ANegativePropertyLengthEndsTheConnection)
{
    QByteArray payload = intPayload("2.2");
    qToBigEndian<qint32>(-8, payload.data() + 4);
    offender->sendFrame(base::SnmpIntType, base::PlainValue, payload);
    expectOnlyTheOffenderIsDisconnected();
}

TEST_F(AgentConnections, ATextCannotForgeALogLine)
{
    offender->sendFrame(base::SnmpIntType, base::PlainValue, intPayload("2\nvigil-agent: warning: forged"));
    EXPECT_TRUE(offender->waitForDisconnect());
    EXPECT_TRUE(agent.waitForLog("forged"));
    EXPECT_FALSE(agent.log().contains("\nvigil-agent: warning: forged"));
}

TEST_F(AgentConnections, AFrameMayArriveByteByByte)
{
    for (const char byte : frame(2, intPayload("2.2")))
        offender->sendBytes(QByteArray(1, byte));
    EXPECT_TRUE(tool->waitFor(full("2.2"), QStringLiteral("7")));
}

TEST_F(AgentConnections, HalfAFrameDoesNotDelayOtherApplications)
{
    offender->sendBytes(frame(2, intPayload("2.2")).left(50));
    bystander->publish("1.2", 12);
    EXPECT_TRUE(tool->waitFor(full("1.2"), QStringLiteral("12")));
    offender->close();
    EXPECT_TRUE(agent.waitForLog("has disconnected"));
    EXPECT_EQ(tool->get(full("1.1")), QStringLiteral("1"));
}

TEST_F(AgentConnections, AValueWithANotificationAlsoSetsTheCell)
{
    offender->sendFrame(base::SnmpIntType, base::ValueAndNotify, intPayload("2.2"));
    EXPECT_TRUE(tool->waitFor(full("2.2"), QStringLiteral("7")));
}

TEST_F(AgentConnections, AFloodOfUnsetsDoesNotDelayOtherApplications)
{
    base::SnmpInt nothing;
    nothing.oid = "2";
    QByteArray payload;
    nothing.serialize(payload);
    constexpr quint64 floodSize = 100'000;
    QByteArray flood;
    for (quint64 counter = 2; counter < floodSize; ++counter)
        flood += frame(counter, payload);
    offender->sendBytes(flood);
    bystander->publish("1.2", 12);
    EXPECT_TRUE(tool->waitFor(full("1.2"), QStringLiteral("12")));
    EXPECT_EQ(tool->get(full("1.1")), QStringLiteral("1"));
    EXPECT_TRUE(offender->isConnected());
}

TEST_F(AgentConnections, EndlessLargeFramesDoNotDelayOtherApplications)
{
    QByteArray beginning = frame(1, QByteArray(1'000'000, 'x'));
    qToBigEndian<qint64>(64 * 1024 * 1024, beginning.data() + 8);
    std::vector<std::unique_ptr<FakeApplication>> halves;
    for (int i = 0; i < 20; ++i) {
        halves.push_back(std::make_unique<FakeApplication>(agent.applicationPort()));
        halves.back()->sendBytes(beginning);
    }
    bystander->publish("1.2", 12);
    EXPECT_TRUE(tool->waitFor(full("1.2"), QStringLiteral("12")));
}

TEST_F(AgentConnections, EachBadConnectionLogsOneLine)
{
    constexpr int attempts = 20; // with fewer lines than a user may cause in a second
    for (int i = 0; i < attempts; ++i) {
        FakeApplication stranger(agent.applicationPort());
        stranger.sendBytes(QByteArray(64, 'x'));
        ASSERT_TRUE(stranger.waitForDisconnect());
    }
    EXPECT_TRUE(
        agent.waitForLog("is disconnected: ", attempts)); // the end is seen before the line is written
    EXPECT_EQ(agent.log().count("is disconnected: "), attempts);
    EXPECT_TRUE(bystander->isConnected());
    EXPECT_EQ(tool->get(full("1.1")), QStringLiteral("1"));
}

TEST(AgentLimits, ReachTheAgentFromTheCommandLine)
{
    AgentProcess agent({QStringLiteral("--max-connections"), QStringLiteral("2"),
                        QStringLiteral("--max-cells"), QStringLiteral("3"), QStringLiteral("--max-text"),
                        QStringLiteral("4"), QStringLiteral("--max-frame"), QStringLiteral("1024")});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    FakeApplication first(agent.applicationPort());
    FakeApplication second(agent.applicationPort());
    second.unset("2"); // a silent connection would make room
    ASSERT_TRUE(
        SnmpTool(agent.udpAddress())
            .waitFor(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentConnectionFrames.2"), QStringLiteral("1")));
    for (const char* oid : {"1.1", "1.2", "1.3", "1.4", "1.5"})
        first.publish(oid, 1);
    first.publish("1.1", std::string("hello"));
    EXPECT_TRUE(agent.waitForLog("more cells than --max-cells allows (3)"));
    EXPECT_TRUE(agent.waitForLog("a text of 5 bytes, --max-text allows 4"));

    FakeApplication third(agent.applicationPort());
    EXPECT_TRUE(third.waitForDisconnect());
    EXPECT_TRUE(agent.waitForLog("as many as --max-connections allows"));
    second.publish("2.1", std::string(1000, 'x'));
    EXPECT_TRUE(second.waitForDisconnect());
    EXPECT_TRUE(agent.waitForLog("--max-frame allows 1024"));
    EXPECT_TRUE(first.isConnected());
    EXPECT_EQ(agent.log().count("warning"), 4) << agent.log().constData();
}
