// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATION_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATION_H

#include <utility>
#include <vector>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"
#include "agent/notifications/NotificationPolicy.h"

namespace agent {

/// What managers are told of without asking, in the terms of SNMP.
///
/// Purpose: texts are cut at 1024 octets, so that a notification fits into a datagram; the cell has them
/// whole.
///
/// Any thread. Failure: none.
struct Notification
{
    ObjectId type;
    std::vector<std::pair<ObjectId, CellValue>> objects;

    /// vigilHealthStatusChanged
    static Notification ofHealth(const HealthChange& change);

    /// vigilValueChanged
    static Notification ofValue(const ObjectId& cell, CellValue value);

    /// About the memory that it takes while it waits, and while Net-SNMP waits for an answer to it.
    size_t size() const;
};

} // namespace agent

#endif
