// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/applications/ApplicationStream.h"
#include "agent/applications/Limits.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpString.h"
#include "support/QtPrinters.h"

using agent::ApplicationStream;
using agent::CellValue;
using agent::ObjectId;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Recorder : ApplicationStream::Receiver
{
    void handleValue(const ObjectId& id, const CellValue& value, bool notify) override
    {
        const int* number = std::get_if<int>(&value);
        said.push_back(agent::toRelativeText(id) + " = " +
                       (number ? std::to_string(*number) : std::get<std::string>(value)) +
                       (notify ? " notify" : ""));
    }
    void handleUnset(const ObjectId& tree) override
    {
        said.push_back("unset " + agent::toRelativeText(tree));
    }
    void handleAnswer(int number, int errorStatus) override
    {
        said.push_back("answer " + std::to_string(number) + ": " + std::to_string(errorStatus));
    }

    std::vector<std::string> said;
};

class ApplicationStreamTest : public testing::Test
{
protected:
    QByteArray frame(int dataType, int callbackId, const base::DbBaseType& record)
    {
        QByteArray payload;
        record.serialize(payload);
        base::FrameHeader header;
        header.dataType = static_cast<qint16>(dataType);
        header.clientCallbackId = callbackId;
        header.messageCounter = ++m_sent;
        return header.toBytes(payload.size()) + payload;
    }

    QByteArray intFrame(const std::string& oid, int value, int callbackId = base::PlainValue)
    {
        base::SnmpInt record;
        record.oid = oid;
        record.value.setValue(value);
        return frame(base::SnmpIntType, callbackId, record);
    }

    Recorder recorder;
    ApplicationStream stream{recorder, agent::Limits::maxFrame};

private:
    quint64 m_sent = 0;
};

} // namespace

TEST_F(ApplicationStreamTest, PassesTheContentsOfRecordsToTheReceiver)
{
    base::SnmpInt nothing;
    nothing.oid = "5.1";
    base::SnmpString text;
    text.oid = "5.2";
    text.value = "text";
    QByteArray bytes = intFrame("5.1", 7);
    bytes += intFrame("5.1", 8, base::ValueAndNotify);
    EXPECT_FALSE(stream.receive(bytes));
    EXPECT_FALSE(stream.receive(frame(base::SnmpStringType, base::PlainValue, text)));
    EXPECT_FALSE(stream.receive(frame(base::SnmpIntType, base::PlainValue, nothing)));
    EXPECT_THAT(recorder.said, ElementsAre("5.1 = 7", "5.1 = 8 notify", "5.2 = text", "unset 5.1"));
    EXPECT_EQ(stream.frames(), 4u);
}

TEST_F(ApplicationStreamTest, ReadsAFrameByteByByte)
{
    for (const char byte : intFrame("5.1", 7)) {
        EXPECT_THAT(recorder.said, IsEmpty());
        EXPECT_FALSE(stream.receive(QByteArray(1, byte)));
        EXPECT_EQ(stream.isInsideFrame(), recorder.said.empty());
    }
    EXPECT_THAT(recorder.said, ElementsAre("5.1 = 7"));
}

TEST_F(ApplicationStreamTest, PassesTheFramesBeforeAnErrorToTheReceiver)
{
    QByteArray bytes = intFrame("5.1", 7);
    bytes += intFrame("5.x", 8);
    bytes += intFrame("5.3", 9);
    EXPECT_TRUE(stream.receive(bytes));
    EXPECT_THAT(recorder.said, ElementsAre("5.1 = 7"));
}

TEST_F(ApplicationStreamTest, TheMessageAboutABadIdentifierIsShort)
{
    const QString problem = stream.receive(intFrame(std::string(60'000, 'x'), 1)).text();
    EXPECT_TRUE(problem.contains(QStringLiteral("not numeric")));
    EXPECT_LT(problem.size(), 200);
}

TEST_F(ApplicationStreamTest, AnIdentifierFarBeyondTheLimitOfSnmpIsNotRead)
{
    std::string oid = "1";
    while (oid.size() < 70'000)
        oid += ".1";
    EXPECT_TRUE(stream.receive(intFrame(oid, 1)).text().contains(QStringLiteral("bytes long")));
    EXPECT_THAT(recorder.said, IsEmpty());
}
