// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/PropertyWriter.h"

#include <QIODevice>

namespace base {

PropertyWriter::PropertyWriter(QByteArray& out) : m_stream(&out, QIODevice::WriteOnly)
{
    m_stream.setVersion(wireStreamVersion);
}

qint64 PropertyWriter::beginProperty(int tag)
{
    const qint64 start = m_stream.device()->pos();
    m_stream << qint32(tag) << qint32(0); // the length is not known yet
    return start;
}

void PropertyWriter::endProperty(qint64 start)
{
    QIODevice* device = m_stream.device();
    const qint64 end = device->pos();
    const qint64 length = end - start - 8;
    device->seek(end - length - 4);
    m_stream << static_cast<qint32>(length);
    device->seek(end);
}

void PropertyWriter::writeValue(qint32 value)
{
    m_stream << value;
}

void PropertyWriter::writeValue(const std::string& text)
{
    m_stream << text.c_str(); // zero-terminated on the wire: the first zero byte ends the text
}

void PropertyWriter::writeValue(const DbDataType<int>& value)
{
    m_stream << qint32(value.value());
}

void PropertyWriter::writeValue(const DbBaseType& record)
{
    QByteArray bytes;
    record.serialize(bytes);
    m_stream << bytes;
}

} // namespace base
