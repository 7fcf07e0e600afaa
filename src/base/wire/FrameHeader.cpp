// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/FrameHeader.h"

#include <QtEndian>

namespace base {

namespace {

/// 0 if the bytes end before.
template <typename Integer>
Integer integerAt(const QByteArray& bytes, int position)
{
    if (bytes.size() < position + static_cast<int>(sizeof(Integer)))
        return 0;
    return qFromBigEndian<Integer>(bytes.constData() + position);
}

template <typename Integer>
void writeInteger(char*& position, Integer value)
{
    qToBigEndian(value, position);
    position += sizeof(value);
}

} // namespace

FrameHeader::Prefix FrameHeader::readPrefix(const QByteArray& bytes, quint64& length, int position)
{
    length = integerAt<quint64>(bytes, position + 8);
    if (integerAt<quint64>(bytes, position) != magic)
        return Prefix::BadMagic;
    return length < minLength || length > maxLength ? Prefix::BadLength : Prefix::Good;
}

FrameHeader FrameHeader::readRemainder(const QByteArray& bytes, int position)
{
    FrameHeader header;
    header.dataType = integerAt<qint16>(bytes, position);
    header.clientCallbackId = integerAt<qint64>(bytes, position + 2);
    header.messageCounter = integerAt<quint64>(bytes, position + 10);
    header.updateMessageCounter = integerAt<quint64>(bytes, position + 18);
    return header;
}

QByteArray FrameHeader::toBytes(int payloadSize) const
{
    char header[size];
    write(header, payloadSize);
    QByteArray bytes;
    bytes.reserve(size + payloadSize);
    bytes.append(header, size);
    return bytes;
}

void FrameHeader::write(char* bytes, int payloadSize) const
{
    writeInteger(bytes, magic);
    writeInteger(bytes, qint64(payloadSize) + remainderSize);
    writeInteger(bytes, dataType);
    writeInteger(bytes, clientCallbackId);
    writeInteger(bytes, messageCounter);
    writeInteger(bytes, updateMessageCounter);
}

} // namespace base
