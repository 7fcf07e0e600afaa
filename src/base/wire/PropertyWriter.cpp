// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/PropertyWriter.h"

#include <QtEndian>

#include <cstring>

namespace base {

namespace {
constexpr int usualRecordSize = 160; // most records then take one allocation
constexpr int lengthBytes = 4;
} // namespace

PropertyWriter::PropertyWriter(QByteArray& out) : m_out(out)
{
    m_out.reserve(m_out.size() + usualRecordSize);
}

int PropertyWriter::beginProperty(int tag)
{
    char bytes[2 * sizeof(qint32)] = {}; // the length is not known yet
    qToBigEndian<qint32>(tag, bytes);
    m_out.append(bytes, sizeof(bytes));
    return m_out.size();
}

void PropertyWriter::endProperty(int start)
{
    qToBigEndian<qint32>(m_out.size() - start, m_out.data() + start - lengthBytes);
}

void PropertyWriter::writeValue(qint32 value)
{
    char bytes[sizeof(value)];
    qToBigEndian(value, bytes);
    m_out.append(bytes, sizeof(bytes));
}

void PropertyWriter::writeValue(const std::string& text)
{
    // Zero-terminated on the wire: the first zero byte ends the text.
    const int length = static_cast<int>(std::strlen(text.c_str())) + 1;
    writeValue(qint32(length));
    m_out.append(text.c_str(), length);
}

void PropertyWriter::writeValue(const DbDataType<int>& value)
{
    writeValue(qint32(value.value()));
}

void PropertyWriter::writeValue(const DbBaseType& record)
{
    QByteArray bytes;
    record.serialize(bytes);
    writeValue(qint32(bytes.size()));
    m_out.append(bytes);
}

} // namespace base
