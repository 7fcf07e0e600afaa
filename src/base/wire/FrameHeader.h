// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_FRAMEHEADER_H
#define VIGIL_BASE_WIRE_FRAMEHEADER_H

#include <QByteArray>
#include <QtGlobal>

namespace base {

/// The 42 bytes before each payload on the connection between the library and the local SNMP service.
///
/// Purpose: both ends write and read frames through it. A frame is the prefix (magic and length), the rest of
/// the header, and the payload; the length counts what follows it. All integers are big-endian and signed.
///
/// Threads: plain values. Failure: readPrefix() says what is wrong; the bytes come from a peer and are not
/// trusted.
struct FrameHeader
{
    static constexpr quint64 magic = Q_UINT64_C(0xABBA08154711F007);
    static constexpr int prefixSize = 16;    ///< magic and length
    static constexpr int remainderSize = 26; ///< the rest of the header
    static constexpr int size = prefixSize + remainderSize;
    static constexpr quint64 minLength = remainderSize;
    static constexpr quint64 maxLength = Q_UINT64_C(64) * 1024 * 1024;

    qint16 dataType = 0;         ///< which record the payload holds, see DataType
    qint64 clientCallbackId = 0; ///< what the frame asks for, see CallbackId
    quint64 messageCounter = 0;  ///< 1 for the first frame after a connection is made
    quint64 updateMessageCounter = 0;

    enum class Prefix { Good, BadMagic, BadLength };

    /// Reads the first 16 bytes of a frame. length is the number of bytes that follow them.
    static Prefix readPrefix(const QByteArray& prefix, quint64& length);

    /// Reads the 26 bytes that follow the prefix.
    static FrameHeader readRemainder(const QByteArray& remainder);

    /// The whole header for a payload of that many bytes.
    QByteArray toBytes(int payloadSize) const;
};

} // namespace base

#endif
