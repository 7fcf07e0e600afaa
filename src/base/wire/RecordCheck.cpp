// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/RecordCheck.h"

#include <QtEndian>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "base/wire/DbDataType.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

namespace base {

namespace {

using Problem = std::optional<QString>;
using ValueCheck = Problem (*)(const QByteArray& value);

constexpr int lengthSize = 4;

// No record has as many. Millions of empty ones would stall the agent.
constexpr int maxProperties = 100;

qint32 readInt(const QByteArray& bytes, int position)
{
    return qFromBigEndian<qint32>(bytes.constData() + position);
}

/// A text or a nested record starts with the length of the rest, which must fill the property.
bool fillsProperty(const QByteArray& value)
{
    return value.size() >= lengthSize && readInt(value, 0) == value.size() - lengthSize;
}

Problem integerProblem(const QByteArray& value)
{
    if (value.size() == int(sizeof(qint32)))
        return std::nullopt;
    return QStringLiteral("an integer is not 4 bytes long");
}

Problem textProblem(const QByteArray& value)
{
    const bool isNullText = value.size() == lengthSize;
    if (fillsProperty(value) && (isNullText || value.indexOf('\0', lengthSize) == value.size() - 1))
        return std::nullopt;
    return QStringLiteral("a text does not end where its property ends");
}

template <typename Record>
Problem problemOf(const QByteArray& bytes);

template <typename Record>
Problem nestedProblem(const QByteArray& value)
{
    if (!fillsProperty(value))
        return QStringLiteral("a nested record is cut short");
    return problemOf<Record>(value.mid(lengthSize));
}

ValueCheck checkOf(int)
{
    return integerProblem;
}

ValueCheck checkOf(const DbDataType<int>&)
{
    return integerProblem;
}

ValueCheck checkOf(const std::string&)
{
    return textProblem;
}

template <typename Record>
ValueCheck checkOf(const Record&)
{
    return nestedProblem<Record>;
}

/// Collects the layout of a record from its description and checks bytes against it.
class Layout
{
public:
    template <typename T>
    void required(int tag, const char*, const T& member)
    {
        m_properties.push_back({tag, checkOf(member), true});
    }

    template <typename T>
    void optional(int tag, const char*, const T& member)
    {
        m_properties.push_back({tag, checkOf(member), false});
    }

    Problem check(const QByteArray& bytes)
    {
        int position = 0;
        qint32 previousTag = std::numeric_limits<qint32>::min();
        for (int count = 1; position < bytes.size(); ++count) {
            if (count > maxProperties)
                return QStringLiteral("a record has more than %1 properties").arg(maxProperties);
            if (Problem problem = checkProperty(bytes, position, previousTag))
                return problem;
        }
        return missingProblem();
    }

private:
    struct Property
    {
        qint32 tag;
        ValueCheck check;
        bool isMissing; // and required
    };

    /// Checks the property at position, and moves position and previousTag on.
    Problem checkProperty(const QByteArray& bytes, int& position, qint32& previousTag)
    {
        if (bytes.size() - position < propertyHeaderSize)
            return QStringLiteral("a property's header is cut short");
        const qint32 tag = readInt(bytes, position);
        const qint32 length = readInt(bytes, position + lengthSize);
        position += propertyHeaderSize;
        if (tag < previousTag)
            return QStringLiteral("property %1 follows property %2").arg(tag).arg(previousTag);
        const int left = bytes.size() - position;
        if (length < 0 || length > left)
            return QStringLiteral("property %1 has the length %2 with %3 bytes left")
                .arg(tag)
                .arg(length)
                .arg(left);
        const int valuePosition = position;
        position += length;
        previousTag = tag;
        return checkValue(tag, bytes, valuePosition, length);
    }

    Problem checkValue(qint32 tag, const QByteArray& bytes, int position, int length)
    {
        for (Property& property : m_properties) {
            if (property.tag == tag) {
                property.isMissing = false;
                return property.check(bytes.mid(position, length));
            }
        }
        return std::nullopt; // unknown properties are skipped
    }

    Problem missingProblem() const
    {
        for (const Property& property : m_properties) {
            if (property.isMissing)
                return QStringLiteral("property %1 is missing").arg(property.tag);
        }
        return std::nullopt;
    }

    std::vector<Property> m_properties; // in the order of their tags
};

template <typename Record>
Problem problemOf(const QByteArray& bytes)
{
    const Record record;
    Layout layout;
    Record::describe(record, layout);
    return layout.check(bytes);
}

} // namespace

std::optional<QString> recordProblem(int dataType, const QByteArray& payload)
{
    switch (dataType) {
    case SnmpIntType:
        return problemOf<SnmpInt>(payload);
    case SnmpStringType:
        return problemOf<SnmpString>(payload);
    case SnmpIntResponseType:
        return problemOf<SnmpIntResponse>(payload);
    case SnmpStringResponseType:
        return problemOf<SnmpStringResponse>(payload);
    default:
        return QStringLiteral("unknown data type %1").arg(dataType);
    }
}

} // namespace base
