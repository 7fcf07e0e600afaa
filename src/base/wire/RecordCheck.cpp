// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/RecordCheck.h"

#include <QtEndian>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/wire/DbDataType.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

namespace base {

namespace {

using Problem = std::optional<QString>;
using ValueCheck = Problem (*)(std::string_view value);

constexpr std::size_t lengthSize = 4;

// No record has as many. Millions of empty ones would stall the agent.
constexpr int maxProperties = 100;

qint32 readInt(std::string_view bytes, std::size_t position)
{
    return qFromBigEndian<qint32>(bytes.data() + position);
}

/// A text or a nested record starts with the length of the rest, which must fill the property.
bool fillsProperty(std::string_view value)
{
    return value.size() >= lengthSize && readInt(value, 0) == static_cast<qint64>(value.size() - lengthSize);
}

Problem integerProblem(std::string_view value)
{
    if (value.size() == sizeof(qint32))
        return std::nullopt;
    return QStringLiteral("an integer is not 4 bytes long");
}

Problem textProblem(std::string_view value)
{
    const bool isNullText = value.size() == lengthSize;
    if (fillsProperty(value) && (isNullText || value.find('\0', lengthSize) == value.size() - 1))
        return std::nullopt;
    return QStringLiteral("a text does not end where its property ends");
}

template <typename Record>
Problem problemOf(std::string_view bytes);

template <typename Record>
Problem nestedProblem(std::string_view value)
{
    if (!fillsProperty(value))
        return QStringLiteral("a nested record is cut short");
    return problemOf<Record>(value.substr(lengthSize));
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

    Problem check(std::string_view bytes)
    {
        std::size_t position = 0;
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
    Problem checkProperty(std::string_view bytes, std::size_t& position, qint32& previousTag)
    {
        if (bytes.size() - position < static_cast<std::size_t>(propertyHeaderSize))
            return QStringLiteral("a property's header is cut short");
        const qint32 tag = readInt(bytes, position);
        const qint32 length = readInt(bytes, position + lengthSize);
        position += propertyHeaderSize;
        if (tag < previousTag)
            return QStringLiteral("property %1 follows property %2").arg(tag).arg(previousTag);
        const std::size_t left = bytes.size() - position;
        if (length < 0 || static_cast<std::size_t>(length) > left)
            return QStringLiteral("property %1 has the length %2 with %3 bytes left")
                .arg(tag)
                .arg(length)
                .arg(left);
        const std::string_view value = bytes.substr(position, static_cast<std::size_t>(length));
        position += value.size();
        previousTag = tag;
        return checkValue(tag, value);
    }

    Problem checkValue(qint32 tag, std::string_view value)
    {
        for (Property& property : m_properties) {
            if (property.tag == tag) {
                property.isMissing = false;
                return property.check(value);
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
Problem problemOf(std::string_view bytes)
{
    const Record record;
    Layout layout;
    Record::describe(record, layout);
    return layout.check(bytes);
}

} // namespace

std::optional<QString> recordProblem(int dataType, const QByteArray& payload)
{
    const std::string_view bytes(payload.constData(), static_cast<std::size_t>(payload.size()));
    switch (dataType) {
    case SnmpIntType:
        return problemOf<SnmpInt>(bytes);
    case SnmpStringType:
        return problemOf<SnmpString>(bytes);
    case SnmpIntResponseType:
        return problemOf<SnmpIntResponse>(bytes);
    case SnmpStringResponseType:
        return problemOf<SnmpStringResponse>(bytes);
    default:
        return QStringLiteral("unknown data type %1").arg(dataType);
    }
}

} // namespace base
