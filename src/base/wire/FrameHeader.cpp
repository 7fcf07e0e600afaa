// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/FrameHeader.h"

#include <QDataStream>
#include <QIODevice>

#include "base/wire/PropertyWriter.h"

namespace base {

FrameHeader::Prefix FrameHeader::readPrefix(const QByteArray& prefix, quint64& length)
{
    QDataStream stream(prefix);
    stream.setVersion(wireStreamVersion);
    quint64 receivedMagic = 0;
    stream >> receivedMagic >> length;
    if (receivedMagic != magic)
        return Prefix::BadMagic;
    return length < minLength || length > maxLength ? Prefix::BadLength : Prefix::Good;
}

FrameHeader FrameHeader::readRemainder(const QByteArray& remainder)
{
    QDataStream stream(remainder);
    stream.setVersion(wireStreamVersion);
    FrameHeader header;
    stream >> header.dataType >> header.clientCallbackId >> header.messageCounter >>
        header.updateMessageCounter;
    return header;
}

QByteArray FrameHeader::toBytes(int payloadSize) const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(wireStreamVersion);
    stream << magic << qint64(payloadSize) + remainderSize;
    stream << dataType << clientCallbackId << messageCounter << updateMessageCounter;
    return bytes;
}

} // namespace base
