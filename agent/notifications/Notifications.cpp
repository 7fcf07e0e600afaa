// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/Notifications.h"

namespace agent {

Notifications::Notifications(const ServedCells& cells, const Mutes& mutes, Clock& clock, size_t maxMemory)
    : m_cells(cells),
      m_queue(clock, maxMemory, [this](const Notification& notification) { m_sender.send(notification); }),
      m_policy(
          clock, mutes, [this](const ObjectId& check) { return served(check); },
          [this](const HealthChange& change) {
              const Cell* status =
                  m_cells.store().find(healthTable::cellOf(healthTable::Column::Status, change.check));
              m_queue.sendInTurn(change, status ? status->owner : 0);
              emit healthChanged();
          })
{
    connect(&cells, &ServedCells::statusWritten, &m_policy, &NotificationPolicy::handleStatusWritten);
    connect(&cells, &ServedCells::summaryWritten, &m_policy, &NotificationPolicy::handleSummaryWritten);
    connect(&cells, &ServedCells::checkCovered, &m_policy, &NotificationPolicy::handleCovered);
    connect(&cells, &ServedCells::checkForgotten, &m_policy, &NotificationPolicy::handleForgotten);
    connect(&cells, &ServedCells::checkRemoved, &m_policy, &NotificationPolicy::handleRemoved);
}

std::optional<NotificationPolicy::Served> Notifications::served(const ObjectId& check) const
{
    using healthTable::cellOf;
    using healthTable::Column;
    const Cell* status = m_cells.store().find(cellOf(Column::Status, check));
    const int* number = status ? std::get_if<int>(&status->served()) : nullptr;
    if (!number)
        return std::nullopt;
    const Cell* summary = m_cells.store().find(cellOf(Column::Summary, check));
    const std::string* text = summary ? std::get_if<std::string>(&summary->served()) : nullptr;
    return NotificationPolicy::Served{*number, text ? *text : std::string()};
}

std::map<ObjectId, int> Notifications::notified() const
{
    std::map<ObjectId, int> statuses = m_policy.notified();
    m_queue.correct(statuses);
    return statuses;
}

void Notifications::notifyOfValue(const ObjectId& cell)
{
    if (const Cell* found = m_cells.store().find(cell))
        m_queue.sendNowOrDrop(Notification::ofValue(cell, found->served()));
}

} // namespace agent
