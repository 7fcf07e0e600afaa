// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DECODE_H
#define VIGIL_BASE_WIRE_DECODE_H

#include <QByteArray>
#include <QString>

#include "base/wire/PropertyReader.h"

namespace base {

/// Finds the name of a property in the description of its record.
class PropertyName
{
public:
    explicit PropertyName(int tag) : m_tag(tag) {}

    template <typename T>
    void required(int tag, const char* name, const T&)
    {
        if (tag == m_tag)
            m_name = name;
    }

    template <typename T>
    void optional(int tag, const char* name, const T& member)
    {
        required(tag, name, member);
    }

    /// Empty if the record has no such property.
    QLatin1String text() const { return QLatin1String(m_name); }

private:
    const int m_tag;
    const char* m_name = "";
};

/// Fills record from bytes, following its description. Throws a QString about a missing property.
template <typename Record>
void decodeRecord(const QByteArray& bytes, Record& record)
{
    try {
        PropertyReader reader(bytes, Record::recordName);
        Record::describe(record, reader);
    } catch (int missingTag) {
        PropertyName name(missingTag);
        Record::describe(record, name);
        throw QStringLiteral("Received incomplete structure %1: Missing property '%2'")
            .arg(QLatin1String(Record::recordName), name.text());
    }
}

} // namespace base

#endif
