// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/RecordCheck.h"

#include <QtEndian>

#include <limits>
#include <map>

#include "base/wire/Protocol.h"

namespace agent {

namespace {

enum class Encoding { Integer, Text, IntRecord, StringRecord };

struct Property
{
    Encoding encoding;
    bool isRequired;
};

using Layout = std::map<qint32, Property>;

const Layout intLayout{
    {0, {Encoding::Integer, true}}, {1, {Encoding::Text, true}}, {2, {Encoding::Integer, false}}};
const Layout stringLayout{
    {0, {Encoding::Integer, true}}, {1, {Encoding::Text, true}}, {2, {Encoding::Text, true}}};
const Layout intResponseLayout{
    {0, {Encoding::Integer, true}}, {1, {Encoding::IntRecord, true}}, {2, {Encoding::Integer, true}}};
const Layout stringResponseLayout{
    {0, {Encoding::Integer, true}}, {1, {Encoding::StringRecord, true}}, {2, {Encoding::Integer, true}}};

constexpr int lengthSize = 4;
constexpr int propertyHeaderSize = 8;

// No record has as many. Millions of empty ones would hold everybody up.
constexpr int maxProperties = 100;

qint32 readInt(const QByteArray& bytes, int position)
{
    return qFromBigEndian<qint32>(bytes.constData() + position);
}

QString layoutProblem(const Layout& layout, const QByteArray& bytes);

/// A text or a nested record opens with the length of what follows, which must fill the property.
bool fillsProperty(const QByteArray& value)
{
    return value.size() >= lengthSize && readInt(value, 0) == value.size() - lengthSize;
}

bool isText(const QByteArray& value)
{
    if (!fillsProperty(value))
        return false;
    return value.size() == lengthSize || value.indexOf('\0', lengthSize) == value.size() - 1;
}

QString nestedProblem(const Layout& layout, const QByteArray& value)
{
    if (!fillsProperty(value))
        return QStringLiteral("a nested record is cut short");
    return layoutProblem(layout, value.mid(lengthSize));
}

QString valueProblem(Encoding encoding, const QByteArray& value)
{
    switch (encoding) {
    case Encoding::Integer:
        return value.size() == int(sizeof(qint32)) ? QString()
                                                   : QStringLiteral("an integer is not 4 bytes long");
    case Encoding::Text:
        return isText(value) ? QString() : QStringLiteral("a text does not end where its property ends");
    case Encoding::IntRecord:
        return nestedProblem(intLayout, value);
    case Encoding::StringRecord:
        break;
    }
    return nestedProblem(stringLayout, value);
}

QString missingProblem(const Layout& missing)
{
    for (const auto& [tag, property] : missing) {
        if (property.isRequired)
            return QStringLiteral("property %1 is missing").arg(tag);
    }
    return QString();
}

QString layoutProblem(const Layout& layout, const QByteArray& bytes)
{
    Layout missing = layout;
    int position = 0;
    int count = 0;
    qint32 previousTag = std::numeric_limits<qint32>::min();
    while (position < bytes.size()) {
        if (++count > maxProperties)
            return QStringLiteral("a record has more than %1 properties").arg(maxProperties);
        if (bytes.size() - position < propertyHeaderSize)
            return QStringLiteral("a property's header is cut short");
        const qint32 tag = readInt(bytes, position);
        const qint32 length = readInt(bytes, position + lengthSize);
        position += propertyHeaderSize;
        if (tag < previousTag)
            return QStringLiteral("property %1 follows property %2").arg(tag).arg(previousTag);
        previousTag = tag;
        if (length < 0 || length > bytes.size() - position)
            return QStringLiteral("property %1 has the length %2 with %3 bytes left")
                .arg(tag)
                .arg(length)
                .arg(bytes.size() - position);
        const auto known = layout.find(tag);
        if (known != layout.end()) {
            QString problem = valueProblem(known->second.encoding, bytes.mid(position, length));
            if (!problem.isEmpty())
                return problem;
            missing.erase(tag);
        }
        position += length;
    }
    return missingProblem(missing);
}

} // namespace

QString recordProblem(int dataType, const QByteArray& payload)
{
    switch (dataType) {
    case base::SnmpIntType:
        return layoutProblem(intLayout, payload);
    case base::SnmpStringType:
        return layoutProblem(stringLayout, payload);
    case base::SnmpIntResponseType:
        return layoutProblem(intResponseLayout, payload);
    case base::SnmpStringResponseType:
        return layoutProblem(stringResponseLayout, payload);
    default:
        return QStringLiteral("unknown data type %1").arg(dataType);
    }
}

} // namespace agent
