// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <vector>

#include "base/wire/FrameHeader.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

namespace {

const std::string statusCell = "127.3.1.200.4.1.1.3.3.97.112.112.2.104.99";
const std::string warningRangeCell = "127.3.1.200.4.2.1.3.3.97.112.112.2.104.99.1.109";

/// The blocks marked "hex" in the document, in lower case, without the remarks after "#".
std::vector<std::string> documentedFrames()
{
    std::ifstream document(WIRE_PROTOCOL_DOCUMENT);
    std::vector<std::string> frames;
    bool isInBlock = false;
    std::string line;
    while (std::getline(document, line)) {
        if (line.rfind("```", 0) == 0) {
            isInBlock = line == "```hex";
            if (isInBlock)
                frames.emplace_back();
        } else if (isInBlock) {
            const std::string digits = line.substr(0, line.find('#'));
            frames.back() += QByteArray::fromHex(QByteArray::fromStdString(digits)).toHex().toStdString();
        }
    }
    return frames;
}

std::string frameOf(const base::DbBaseType& record, base::DataType type, base::CallbackId callbackId,
                    quint64 counter)
{
    QByteArray payload;
    record.serialize(payload);
    base::FrameHeader header;
    header.dataType = static_cast<qint16>(type);
    header.clientCallbackId = callbackId;
    header.messageCounter = counter;
    return (header.toBytes(payload.size()) + payload).toHex().toStdString();
}

std::string statusFrame()
{
    base::SnmpInt record;
    record.oid = statusCell;
    record.value.setValue(1);
    return frameOf(record, base::SnmpIntType, base::PlainValue, 1);
}

base::SnmpString question()
{
    base::SnmpString record;
    record.setStoreType(7);
    record.oid = warningRangeCell;
    record.value = "~:80";
    return record;
}

std::string questionFrame()
{
    return frameOf(question(), base::SnmpStringType, base::Validation, 1);
}

std::string answerFrame()
{
    base::SnmpStringResponse answer;
    answer.varbind = question();
    answer.errorStatus = 1;
    return frameOf(answer, base::SnmpStringResponseType, base::Validation, 2);
}

} // namespace

TEST(WireProtocolDocument, ShowsTheFramesSentAndReadByTheLibrary)
{
    EXPECT_THAT(documentedFrames(), testing::ElementsAre(statusFrame(), questionFrame(), answerFrame()));
}
