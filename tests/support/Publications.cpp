// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/Publications.h"

#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

namespace support {

using base::SnmpInt;
using base::SnmpIntResponse;
using base::SnmpString;
using base::SnmpStringResponse;

namespace {

std::string describeVarbind(const SnmpInt& record)
{
    return record.value.isNull() ? unset(record.oid) : set(record.oid, record.value.value());
}

std::string describeVarbind(const SnmpString& record)
{
    return set(record.oid, record.value);
}

template <typename Response>
std::string describeAnswer(const QByteArray& payload)
{
    const Response response(payload);
    return "answer " + std::to_string(response.errorStatus) + " to " + describeVarbind(response.varbind);
}

std::string describePayload(const FakeService::Frame& frame)
{
    switch (frame.header.dataType) {
    case base::SnmpIntType:
        return describeVarbind(SnmpInt(frame.payload));
    case base::SnmpStringType:
        return describeVarbind(SnmpString(frame.payload));
    case base::SnmpIntResponseType:
        return describeAnswer<SnmpIntResponse>(frame.payload);
    case base::SnmpStringResponseType:
        return describeAnswer<SnmpStringResponse>(frame.payload);
    default:
        return "data type " + std::to_string(frame.header.dataType);
    }
}

bool isAnswer(const FakeService::Frame& frame)
{
    return frame.header.dataType >= base::SnmpIntResponseType;
}

template <typename Record>
QByteArray encoded(Record record, const std::string& oid, int storeType)
{
    record.oid = oid;
    record.setStoreType(storeType);
    QByteArray payload;
    record.serialize(payload);
    return payload;
}

} // namespace

std::string set(const std::string& oid, int value)
{
    return oid + " = " + std::to_string(value);
}

std::string set(const std::string& oid, const std::string& value)
{
    return oid + " = \"" + value + '"';
}

std::string unset(const std::string& oid)
{
    return oid + " unset";
}

std::string withTrap(const std::string& publication)
{
    return publication + " (trap)";
}

std::string cell(int table, int column, const std::vector<std::string>& index)
{
    std::string oid = "127.3.1.200.4." + std::to_string(table) + ".1." + std::to_string(column);
    for (const std::string& text : index) {
        oid += '.' + std::to_string(text.size());
        for (const char byte : text)
            oid += '.' + std::to_string(byte);
    }
    return oid;
}

std::string describe(const FakeService::Frame& frame)
{
    const std::string text = describePayload(frame);
    const qint64 expectedId = isAnswer(frame) ? base::Validation : base::PlainValue;
    if (frame.header.clientCallbackId == expectedId)
        return text;
    if (frame.header.clientCallbackId == base::ValueAndNotify && !isAnswer(frame))
        return withTrap(text);
    return text + " with callback id " + std::to_string(frame.header.clientCallbackId);
}

QByteArray encodedInt(const std::string& oid, int value, int storeType)
{
    SnmpInt record;
    record.value.setValue(value);
    return encoded(record, oid, storeType);
}

QByteArray encodedString(const std::string& oid, const std::string& value, int storeType)
{
    SnmpString record;
    record.value = value;
    return encoded(record, oid, storeType);
}

} // namespace support
