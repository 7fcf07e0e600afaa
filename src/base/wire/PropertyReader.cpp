// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/PropertyReader.h"

#include <QIODevice>

#include <memory>

#include "base/wire/PropertyWriter.h"
#include "base/wire/Protocol.h"

namespace base {

namespace {
constexpr int smallestEncodedElement = 4; // the length of an empty byte array
} // namespace

PropertyReader::PropertyReader(const QByteArray& bytes, const char* recordName)
    : m_stream(bytes), m_recordName(recordName)
{
    m_stream.setVersion(wireStreamVersion);
}

PropertyReader::Found PropertyReader::seekProperty(int wantedTag)
{
    m_found = Found::End;
    while (!m_stream.atEnd()) {
        qint32 tag = 0;
        qint32 length = 0;
        m_stream >> tag >> length;
        if (length < 0)
            throwMalformed(QStringLiteral("Property length %1").arg(length));
        if (tag == wantedTag)
            return m_found = Found::Wanted;
        if (tag > wantedTag)
            return m_found = Found::Later;
        skipValue(length);
    }
    return m_found;
}

void PropertyReader::skipValue(qint32 length)
{
    m_stream.skipRawData(length); // stops at the end of the bytes
}

void PropertyReader::stepBack()
{
    QIODevice* device = m_stream.device();
    device->seek(device->pos() - propertyHeaderSize);
}

void PropertyReader::throwMalformed(const QString& what) const
{
    throw QStringLiteral("Received malformed structure %1: %2").arg(QLatin1String(m_recordName), what);
}

void PropertyReader::readValue(int& target)
{
    m_stream >> target;
}

void PropertyReader::readValue(std::string& target)
{
    char* text = nullptr;
    m_stream >> text; // null for length 0 and for a length beyond the end of the bytes
    const std::unique_ptr<char[]> buffer(text);
    if (text)
        target = text;
}

void PropertyReader::readValue(DbDataType<int>& target)
{
    qint32 value = 0;
    m_stream >> value;
    target.setValue(value);
}

QByteArray PropertyReader::readBytes()
{
    QByteArray bytes;
    m_stream >> bytes;
    return bytes;
}

int PropertyReader::readCount()
{
    qint32 count = 0;
    m_stream >> count;
    if (count < 0 || count > m_stream.device()->bytesAvailable() / smallestEncodedElement)
        throwMalformed(QStringLiteral("Element count %1").arg(count));
    return count;
}

} // namespace base
