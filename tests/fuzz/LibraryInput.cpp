// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The library's receive path without its socket: frames, records, identifiers and ranges.
//
// The first byte of the input selects its meaning:
//
// - even: the rest is a stream of bytes, received in pieces of this number of bytes;
// - odd: the rest is a list of records. Each starts with a byte for its class and one for its length.

#include <vigil/Oid.h>
#include <vigil/Range.h>

#include <algorithm>

#include "base/wire/FrameCutter.h"
#include "base/wire/Protocol.h"
#include "base/wire/RecordCheck.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"
#include "base/wire/SnmpVector.h"
#include "fuzz/Fuzzer.h"
#include "fuzz/Input.h"
#include "support/EncodedRecord.h"

namespace {

using fuzz::Input;
using fuzz::require;
using support::encoded;

/// Reads a record. The only permitted failure is a text.
template <typename Record>
bool read(const QByteArray& bytes, Record& record)
{
    try {
        record.decode(bytes);
    } catch (const QString& message) {
        require(message.startsWith(QStringLiteral("Received ")));
        return false;
    }
    const QByteArray copy = encoded(record);
    require(encoded(Record(copy)) == copy);
    return true;
}

/// Also compares the forgiving reader with the strict check.
template <typename Record>
bool readChecked(int dataType, const QByteArray& bytes, Record& record)
{
    const bool isReadable = read(bytes, record);
    require(isReadable || base::recordProblem(dataType, bytes));
    if (isReadable)
        require(!base::recordProblem(dataType, encoded(record)));
    return isReadable;
}

void readIdentifier(const std::string& text)
{
    const vigil::Oid oid = vigil::Oid::fromStdString(text);
    require(vigil::Oid::fromStdString(oid.toStdString()).compare(oid) == 0);
}

void readInt(const QByteArray& bytes)
{
    base::SnmpInt record;
    if (readChecked(base::SnmpIntType, bytes, record))
        readIdentifier(record.oid);
}

void readString(const QByteArray& bytes)
{
    base::SnmpString record;
    if (!readChecked(base::SnmpStringType, bytes, record))
        return;
    readIdentifier(record.oid);
    vigil::Range range;
    vigil::Range::fromString(record.value, range);
}

template <typename Record>
void readOther(const QByteArray& bytes)
{
    Record record;
    read(bytes, record);
}

void readRecord(int dataType, const QByteArray& bytes)
{
    switch (dataType) {
    case base::SnmpIntType:
        return readInt(bytes);
    case base::SnmpStringType:
        return readString(bytes);
    case base::SnmpIntResponseType:
        return readOther<base::SnmpIntResponse>(bytes);
    case base::SnmpStringResponseType:
        return readOther<base::SnmpStringResponse>(bytes);
    case 4:
        return readOther<base::SnmpIntVector>(bytes);
    case 5:
        return readOther<base::SnmpStringVector>(bytes);
    case 6:
        return readOther<base::SnmpIntResponseVector>(bytes);
    case 7:
        return readOther<base::SnmpStringResponseVector>(bytes);
    default:
        return;
    }
}

void readFrames(Input& input, int pieceSize)
{
    base::FrameCutter cutter;
    while (!input.isAtEnd()) {
        cutter.append(input.take(pieceSize));
        base::FrameCutter::Status status = cutter.look();
        while (status == base::FrameCutter::Status::Complete) {
            const quint64 length = cutter.length();
            const base::Frame frame = cutter.take();
            require(static_cast<quint64>(frame.payload.size()) + base::FrameHeader::remainderSize == length);
            readRecord(frame.header.dataType, frame.payload);
            status = cutter.look();
        }
        if (status == base::FrameCutter::Status::Incomplete)
            cutter.discardTaken();
        else
            cutter.clear();
    }
}

void readRecords(Input& input)
{
    while (!input.isAtEnd()) {
        const int dataType = input.byte() % 8;
        const int size = input.byte();
        readRecord(dataType, input.take(size));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const int kind = input.byte();
    if (kind % 2 == 0)
        readFrames(input, std::max(kind, 1));
    else
        readRecords(input);
    return 0;
}
