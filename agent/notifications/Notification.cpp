// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/Notification.h"

#include "agent/cells/HealthTable.h"
#include "agent/checks/RowTexts.h"
#include "agent/checks/Severity.h"
#include "agent/core/ShortText.h"

namespace agent {

namespace {

constexpr size_t maxText = 1024;

// The cost of one varbind in Net-SNMP besides its text. sysUpTime and snmpTrapOID come on top.
constexpr size_t objectSize = 1200;
constexpr size_t fixedObjects = 2;

const ObjectId vigilHealthStatusChanged = below(vigilMibRoot(), {0, 1});
const ObjectId vigilValueChanged = below(vigilMibRoot(), {0, 2});
const ObjectId vigilHealthCheckPreviousStatus = below(vigilMibRoot(), {6, 1, 0});
const ObjectId vigilNotificationFirstKey = below(vigilMibRoot(), {6, 2, 0});
const ObjectId vigilNotificationSecondKey = below(vigilMibRoot(), {6, 3, 0});
const ObjectId vigilNotificationSeverity = below(vigilMibRoot(), {6, 4, 0});

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
    std::vector<std::string> keys = textsOf(change.check);
    keys.resize(2);
    return {vigilHealthStatusChanged,
            {{cellOf(Column::Status, change.check), change.status},
             {vigilHealthCheckPreviousStatus, change.previousStatus},
             {cellOf(Column::Summary, change.check), cut(change.summary)},
             {vigilNotificationFirstKey, keys[0]},
             {vigilNotificationSecondKey, keys[1]},
             {vigilNotificationSeverity, status::severityOf(change.status)}}};
}

Notification Notification::ofValue(const ObjectId& cell, CellValue value)
{
    if (std::string* text = std::get_if<std::string>(&value))
        *text = cut(std::move(*text));
    return {vigilValueChanged, {{cell, std::move(value)}}};
}

std::string Notification::cut(std::string text)
{
    return shortened(std::move(text), maxText);
}

size_t Notification::size() const
{
    size_t size = (objects.size() + fixedObjects) * objectSize;
    for (const auto& [id, value] : objects)
        size += textSize(value);
    return size;
}

} // namespace agent
