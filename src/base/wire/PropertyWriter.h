// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_PROPERTYWRITER_H
#define VIGIL_BASE_WIRE_PROPERTYWRITER_H

#include <QByteArray>
#include <QtGlobal>

#include <string>
#include <vector>

#include "base/wire/DbBaseType.h"

namespace base {

/// Writes the properties of one record, in ascending order of their tags: tag, byte length, value. The length
/// lets a reader skip unknown properties. A record's describe() calls it for each property. The encoding is
/// that of QDataStream as of Qt 4.6, whose device would cost more than the record.
class PropertyWriter
{
public:
    /// Appends to out, which must outlive the writer.
    explicit PropertyWriter(QByteArray& out);

    template <typename T>
    void required(int tag, const char*, const T& value)
    {
        const int start = beginProperty(tag);
        writeValue(value);
        endProperty(start);
    }

    /// Leaves out a null value. A vector is written even if it is empty.
    template <typename T>
    void optional(int tag, const char* name, const T& value)
    {
        if (!isNull(value))
            required(tag, name, value);
    }

private:
    int beginProperty(int tag);
    void endProperty(int start);

    static bool isNull(const DbDataType<int>& value) { return value.isNull(); }

    template <typename Record>
    static bool isNull(const std::vector<Record>&)
    {
        return false;
    }

    void writeValue(qint32 value);
    void writeValue(const std::string& text);
    void writeValue(const DbDataType<int>& value);
    void writeValue(const DbBaseType& record);

    template <typename Record>
    void writeValue(const std::vector<Record>& records)
    {
        writeValue(static_cast<qint32>(records.size()));
        for (const Record& record : records)
            writeValue(record);
    }

    QByteArray& m_out;
};

} // namespace base

#endif
