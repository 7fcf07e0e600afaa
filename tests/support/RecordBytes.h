// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_RECORDBYTES_H
#define VIGIL_SUPPORT_RECORDBYTES_H

#include <QByteArray>
#include <QtEndian>

/// The parts of an encoded data record, written by hand: tests of the encoding must not use the code under
/// test. All functions are pure.
namespace support {

inline QByteArray int32Bytes(qint32 value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

/// An encoded text: its length with the terminating zero byte, its bytes, the zero byte.
inline QByteArray textBytes(const QByteArray& text)
{
    return int32Bytes(text.size() + 1) + text + '\0';
}

/// A nested record: its length and its encoding.
inline QByteArray nestedBytes(const QByteArray& encoding)
{
    return int32Bytes(encoding.size()) + encoding;
}

/// A property with any value in its length field.
inline QByteArray propertyBytes(qint32 tag, qint32 length, const QByteArray& value)
{
    return int32Bytes(tag) + int32Bytes(length) + value;
}

inline QByteArray propertyBytes(qint32 tag, const QByteArray& value)
{
    return propertyBytes(tag, value.size(), value);
}

} // namespace support

#endif
