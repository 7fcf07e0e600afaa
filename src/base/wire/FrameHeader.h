// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_FRAMEHEADER_H
#define VIGIL_BASE_WIRE_FRAMEHEADER_H

#include <QByteArray>
#include <QtGlobal>

namespace base {

/// The 42 bytes before each payload on the connection between the library and the local SNMP service.
///
/// A frame is the prefix (magic and length), the remainder of the header, and the payload. The length counts
/// everything after the prefix. All integers are signed and big-endian.
///
/// Failure: readPrefix() reports a bad prefix. The bytes come from a peer and are not trusted.
struct FrameHeader
{
    static constexpr quint64 magic = Q_UINT64_C(0xABBA08154711F007);
    static constexpr int prefixSize = 16;    ///< magic and length
    static constexpr int remainderSize = 26; ///< the rest of the header
    static constexpr int size = prefixSize + remainderSize;
    static constexpr quint64 minLength = remainderSize;
    static constexpr quint64 maxLength = Q_UINT64_C(64) * 1024 * 1024;

    qint16 dataType = 0;         ///< the payload's record, see DataType
    qint64 clientCallbackId = 0; ///< the purpose of the frame, see CallbackId
    quint64 messageCounter = 0;  ///< 1 in the first frame of a connection
    quint64 updateMessageCounter = 0;

    enum class Prefix { Good, BadMagic, BadLength };

    /// Reads the first 16 bytes of a frame, which starts at position. length is the number of bytes after
    /// them.
    static Prefix readPrefix(const QByteArray& bytes, quint64& length, int position = 0);

    /// Reads the 26 bytes after the prefix, which start at position.
    static FrameHeader readRemainder(const QByteArray& bytes, int position = 0);

    /// The whole header for a payload of payloadSize bytes. The payload can be appended without an
    /// allocation.
    QByteArray toBytes(int payloadSize) const;

    /// The same into the 42 bytes at bytes.
    void write(char* bytes, int payloadSize) const;
};

} // namespace base

#endif
