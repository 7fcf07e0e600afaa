// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/Notification.h"

#include "agent/cells/HealthTable.h"

namespace agent {

namespace {

constexpr size_t maxText = 1024;

// What Net-SNMP needs for one object, whatever it holds, and for two more that are always there.
constexpr size_t objectSize = 1200;
constexpr size_t fixedObjects = 2;

const ObjectId healthStatusChanged = below(vigilMibRoot(), {0, 1});
const ObjectId valueChanged = below(vigilMibRoot(), {0, 2});
const ObjectId previousStatus = below(vigilMibRoot(), {6, 1, 0});

/// Cuts no character of UTF-8 in two.
std::string shortened(std::string text)
{
    if (text.size() <= maxText)
        return text;
    const auto isInside = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U; };
    size_t end = maxText;
    while (end > 0 && isInside(text[end]))
        --end;
    text.resize(end > 0 ? end : maxText);
    return text;
}

size_t textSize(const CellValue& value)
{
    const std::string* text = std::get_if<std::string>(&value);
    return text ? text->size() : 0;
}

} // namespace

Notification Notification::ofHealth(const HealthChange& change)
{
    using healthTable::cellOf;
    using healthTable::Column;
    return {healthStatusChanged,
            {{cellOf(Column::Status, change.check), change.status},
             {previousStatus, change.previousStatus},
             {cellOf(Column::Summary, change.check), shortened(change.summary)}}};
}

Notification Notification::ofValue(const ObjectId& cell, CellValue value)
{
    if (std::string* text = std::get_if<std::string>(&value))
        *text = shortened(std::move(*text));
    return {valueChanged, {{cell, std::move(value)}}};
}

size_t Notification::size() const
{
    size_t size = (objects.size() + fixedObjects) * objectSize;
    for (const auto& [id, value] : objects)
        size += textSize(value);
    return size;
}

} // namespace agent
