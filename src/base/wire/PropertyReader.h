// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_PROPERTYREADER_H
#define VIGIL_BASE_WIRE_PROPERTYREADER_H

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

#include "base/wire/DbBaseType.h"

namespace base {

/// Reads the properties of one record, in ascending order of their tags. A record's describe() calls it for
/// each property.
///
/// The library's forgiving reader: it skips unknown properties, and at the end of the bytes it leaves the
/// target unchanged, even of a required property. A record may end after any complete property. The agent
/// calls recordProblem() first, which forgives nothing.
///
/// Failure: the bytes come from a peer and are not trusted. required() throws its tag, an int, when a later
/// property comes first. A senseless length or count throws a QString. Memory use is bounded by the size of
/// the bytes.
class PropertyReader
{
public:
    /// recordName is for messages and must outlive the reader.
    PropertyReader(const QByteArray& bytes, const char* recordName);

    template <typename T>
    void required(int tag, const char*, T& target)
    {
        if (seekProperty(tag) == Found::Later)
            throw tag;
        readIfFound(target);
    }

    template <typename T>
    void optional(int tag, const char*, T& target)
    {
        if (seekProperty(tag) == Found::Later)
            stepBack();
        else
            readIfFound(target);
    }

private:
    enum class Found { Wanted, Later, End };

    Found seekProperty(int wantedTag);
    int available() const { return m_bytes.size() - m_position; }
    const char* take(quint32 size);
    qint32 takeInt();
    void stepBack();
    [[noreturn]] void throwMalformed(const QString& what) const;

    template <typename T>
    void readIfFound(T& target)
    {
        if (m_found == Found::Wanted)
            readValue(target);
    }

    void readValue(int& target);
    void readValue(std::string& target);
    void readValue(DbDataType<int>& target);
    QByteArray readBytes();
    int readCount();

    template <typename Record>
    void readValue(Record& target)
    {
        target.decode(readBytes());
    }

    template <typename Record>
    void readValue(std::vector<Record>& target)
    {
        const int count = readCount();
        if (count == 0)
            return;
        target.resize(static_cast<std::size_t>(count));
        for (Record& element : target)
            readValue(element);
    }

    const QByteArray m_bytes;
    const char* m_recordName;
    int m_position = 0;
    Found m_found = Found::End;
};

} // namespace base

#endif
