// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/Record.h"

#include <map>
#include <stdexcept>
#include <string_view>

#include "testing/BigEndian.h"

namespace vigil::test {

namespace {

using Properties = std::map<int, std::string_view>;

int number(std::string_view bytes)
{
    if (bytes.size() < 4)
        throw std::runtime_error("the fake service: a record ends early");
    return static_cast<std::int32_t>(fromBigEndian(bytes, 4));
}

/// What follows a length of four bytes.
std::string_view sized(std::string_view bytes)
{
    const auto size = static_cast<std::size_t>(number(bytes));
    if (size > bytes.size() - 4)
        throw std::runtime_error("the fake service: a record ends early");
    return bytes.substr(4, size);
}

std::string text(std::string_view bytes)
{
    const std::string_view withZero = sized(bytes);
    return std::string(withZero.substr(0, withZero.find('\0')));
}

Properties propertiesOf(std::string_view bytes)
{
    Properties properties;
    while (!bytes.empty()) {
        const int tag = number(bytes);
        const std::string_view value = sized(bytes.substr(4));
        properties[tag] = value;
        bytes.remove_prefix(8 + value.size());
    }
    return properties;
}

std::string property(int tag, const std::string& value)
{
    return toBigEndian(static_cast<std::uint64_t>(tag), 4) + toBigEndian(value.size(), 4) + value;
}

std::string integer(int value)
{
    return toBigEndian(static_cast<std::uint32_t>(value), 4);
}

std::string encodedText(const std::string& value)
{
    return toBigEndian(value.size() + 1, 4) + value + '\0';
}

Record decodeValue(std::string_view payload, bool isText)
{
    const Properties properties = propertiesOf(payload);
    Record record;
    record.request = number(properties.at(0));
    record.identifier = text(properties.at(1));
    const auto value = properties.find(2);
    if (value == properties.end()) {
        record.kind = Record::Kind::Withdrawal;
    } else if (isText) {
        record.kind = Record::Kind::Text;
        record.text = text(value->second);
    } else {
        record.number = number(value->second);
    }
    return record;
}

} // namespace

Record decode(const Frame& frame)
{
    const bool isText = frame.dataType == TextType || frame.dataType == TextReplyType;
    if (frame.dataType == NumberType || frame.dataType == TextType)
        return decodeValue(frame.payload, isText);
    const Properties properties = propertiesOf(frame.payload);
    Record record = decodeValue(sized(properties.at(1)), isText);
    record.isReply = true;
    record.errorStatus = number(properties.at(2));
    return record;
}

std::string encode(const Record& record)
{
    return property(0, integer(record.request)) + property(1, encodedText(record.identifier)) +
           property(2, record.kind == Record::Kind::Text ? encodedText(record.text) : integer(record.number));
}

DataType dataTypeOf(const Record& record)
{
    return record.kind == Record::Kind::Text ? TextType : NumberType;
}

} // namespace vigil::test
