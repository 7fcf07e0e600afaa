// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATION_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATION_H

#include <string>
#include <utility>
#include <vector>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"
#include "agent/notifications/HealthChange.h"

namespace agent {

/// An SNMP notification: its type and its varbinds.
///
/// Texts are cut at 1024 octets: the notification must fit into a datagram. The cells have them whole.
struct Notification
{
    ObjectId type;
    std::vector<std::pair<ObjectId, CellValue>> objects;

    /// vigilHealthStatusChanged
    static Notification ofHealth(const HealthChange& change);

    /// vigilValueChanged
    static Notification ofValue(const ObjectId& cell, CellValue value);

    /// A text as notifications have it.
    static std::string cut(std::string text);

    /// Roughly the memory it takes while it waits for its turn, or Net-SNMP for the response to an inform.
    size_t size() const;
};

} // namespace agent

#endif
