// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/PropertyReader.h"

#include <QtEndian>

#include <algorithm>

#include "base/wire/Protocol.h"

namespace base {

namespace {
constexpr int smallestEncodedElement = 4; // the length of an empty byte array
constexpr quint32 nullByteArray = 0xffff'ffff;
} // namespace

PropertyReader::PropertyReader(const QByteArray& bytes, const char* recordName)
    : m_bytes(bytes), m_recordName(recordName)
{}

PropertyReader::Found PropertyReader::seekProperty(int wantedTag)
{
    m_found = Found::End;
    while (available() > 0) {
        const qint32 tag = takeInt();
        const qint32 length = takeInt();
        if (length < 0)
            throwMalformed(QStringLiteral("Property length %1").arg(length));
        if (tag == wantedTag)
            return m_found = Found::Wanted;
        if (tag > wantedTag)
            return m_found = Found::Later;
        take(static_cast<quint32>(length));
    }
    return m_found;
}

/// Null, and nothing is left, if there are fewer bytes.
const char* PropertyReader::take(quint32 size)
{
    const int left = available();
    const char* bytes = m_bytes.constData() + m_position;
    m_position += static_cast<int>(std::min(size, static_cast<quint32>(left)));
    return size <= static_cast<quint32>(left) ? bytes : nullptr;
}

/// 0 if the bytes end before.
qint32 PropertyReader::takeInt()
{
    const char* bytes = take(sizeof(qint32));
    return bytes ? qFromBigEndian<qint32>(bytes) : 0;
}

void PropertyReader::stepBack()
{
    if (m_position >= propertyHeaderSize)
        m_position -= propertyHeaderSize;
}

void PropertyReader::throwMalformed(const QString& what) const
{
    throw QStringLiteral("Received malformed structure %1: %2").arg(QLatin1String(m_recordName), what);
}

void PropertyReader::readValue(int& target)
{
    target = takeInt();
}

/// Leaves target unchanged for length 0 and for a length beyond the end of the bytes.
void PropertyReader::readValue(std::string& target)
{
    const auto length = static_cast<quint32>(takeInt());
    const char* text = take(length);
    if (text && length > 0)
        target.assign(text, std::find(text, text + length, '\0'));
}

void PropertyReader::readValue(DbDataType<int>& target)
{
    target.setValue(takeInt());
}

QByteArray PropertyReader::readBytes()
{
    const auto length = static_cast<quint32>(takeInt());
    const char* bytes = length == nullByteArray ? nullptr : take(length);
    return bytes ? QByteArray(bytes, static_cast<int>(length)) : QByteArray();
}

int PropertyReader::readCount()
{
    const qint32 count = takeInt();
    if (count < 0 || count > available() / smallestEncodedElement)
        throwMalformed(QStringLiteral("Element count %1").arg(count));
    return count;
}

} // namespace base
