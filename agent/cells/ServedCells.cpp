// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/ServedCells.h"

#include <algorithm>

#include "agent/core/Log.h"

namespace agent {

using healthTable::cellOf;
using healthTable::Column;

namespace {

std::string reason(const char* what, const QDateTime& since)
{
    return QStringLiteral("%1 since %2 UTC.")
        .arg(QLatin1String(what), since.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")))
        .toStdString();
}

} // namespace

ServedCells::ServedCells(CellStore& store, Clock& clock, const Settings& settings)
    : m_store(store),
      m_clock(clock),
      m_settings(settings),
      m_grace(clock, settings.graceMs, [this](ApplicationId owner, qint64) { overruleLost(owner); }),
      m_memory(clock, settings.forgetMs, [this](ApplicationId owner, qint64) { removeAllOf(owner); }),
      m_returns(clock, settings.graceMs, [this](ApplicationId owner, qint64) { removeAllOf(owner); }),
      m_silence(clock, settings.staleAfterMs,
                [this](const ObjectId& check, qint64 waitedMs) { overruleSilent(check, waitedMs); })
{}

// --- What applications do

std::optional<ApplicationId> ServedCells::publish(ApplicationId owner, const ObjectId& id,
                                                  const CellValue& value)
{
    const std::optional<ApplicationId> previous = m_store.set(id, value, owner);
    const std::optional<healthTable::Position> position = healthTable::positionOf(id);
    if (position) {
        handleWritten(*position);
        tellWritten(*position, value);
    }
    if (!previous || !isLost(*previous))
        return previous;
    handleTakenOver(*previous);
    return std::nullopt;
}

void ServedCells::handleWritten(const healthTable::Position& position)
{
    const ObjectId statusCell = cellOf(Column::Status, position.check);
    const ObjectId summaryCell = cellOf(Column::Summary, position.check);
    if (position.column == Column::Status) {
        m_store.uncover(statusCell);
        m_store.uncover(summaryCell);
        m_silence.restart(position.check);
        return;
    }
    const Cell* status = m_store.find(statusCell);
    const bool isSilent = status && status->cover && !isLost(status->owner);
    if (!isSilent)
        m_store.uncover(summaryCell);
}

void ServedCells::tellWritten(const healthTable::Position& position, const CellValue& value)
{
    const int* status = std::get_if<int>(&value);
    const std::string* summary = std::get_if<std::string>(&value);
    if (position.column == Column::Status && status)
        emit statusWritten(position.check, *status);
    else if (position.column == Column::Summary && summary)
        emit summaryWritten(position.check, *summary);
}

size_t ServedCells::unset(ApplicationId owner, const ObjectId& tree)
{
    const std::vector<ObjectId> removed = m_store.unsetTree(tree, owner);
    handleRemoved(removed);
    return removed.size();
}

void ServedCells::handleRemoved(const std::vector<ObjectId>& ids)
{
    for (const ObjectId& id : ids) {
        const std::optional<healthTable::Position> position = healthTable::positionOf(id);
        if (!position || position->column != Column::Status)
            continue;
        m_silence.remove(position->check);
        emit checkRemoved(position->check);
    }
}

// --- Lost connections

bool ServedCells::lose(ApplicationId owner)
{
    if (m_store.countOf(owner) == 0)
        return false;
    m_lostSince[owner] = m_clock.nowUtc();
    m_grace.restart(owner);
    m_memory.restart(owner);
    while (m_lostSince.size() > 1 && keepsTooMuch())
        removeOldest();
    return true;
}

bool ServedCells::keepsTooMuch() const
{
    size_t cells = 0;
    for (const auto& [owner, since] : m_lostSince)
        cells += m_store.countOf(owner);
    return m_lostSince.size() > m_settings.maxLost || cells > m_settings.maxLostCells;
}

void ServedCells::removeOldest()
{
    const auto oldest =
        std::min_element(m_lostSince.begin(), m_lostSince.end(),
                         [](const auto& left, const auto& right) { return left.second < right.second; });
    const ApplicationId owner = oldest->first;
    log::warning(
        QStringLiteral("%1 lost connections have left cells behind, which is too many; those of application "
                       "%2 are removed. Find out which application keeps crashing")
            .arg(m_lostSince.size())
            .arg(owner));
    removeAllOf(owner);
}

void ServedCells::overruleLost(ApplicationId owner)
{
    const std::string summary = reason("No connection to the application", m_lostSince.at(owner));
    for (const ObjectId& id : m_store.idsOf(owner, healthTable::column(Column::Status))) {
        const std::optional<healthTable::Position> position = healthTable::positionOf(id);
        if (!position)
            continue; // the column itself
        const ObjectId summaryCell = cellOf(Column::Summary, position->check);
        m_store.cover(id, healthTable::unknownStatus);
        if (isOfLost(summaryCell))
            m_store.cover(summaryCell, summary);
        m_silence.remove(position->check);
        emit checkCovered(position->check);
    }
}

bool ServedCells::isOfLost(const ObjectId& cell) const
{
    const Cell* found = m_store.find(cell);
    return found && isLost(found->owner);
}

void ServedCells::handleTakenOver(ApplicationId lost)
{
    if (m_store.countOf(lost) == 0)
        endLoss(lost);
    else
        m_returns.start(lost);
}

void ServedCells::removeAllOf(ApplicationId lost)
{
    const std::vector<ObjectId> removed = m_store.removeAllOf(lost);
    log::detail([&] {
        return QStringLiteral("application %1 is forgotten, cells removed: %2").arg(lost).arg(removed.size());
    });
    handleRemoved(removed);
    endLoss(lost);
}

void ServedCells::endLoss(ApplicationId owner)
{
    m_lostSince.erase(owner);
    m_grace.remove(owner);
    m_memory.remove(owner);
    m_returns.remove(owner);
    emit applicationGone(owner);
}

// --- Silence

void ServedCells::overruleSilent(const ObjectId& check, qint64 silentMs)
{
    const QDateTime lastWrite = m_clock.nowUtc().addMSecs(-silentMs);
    m_store.cover(cellOf(Column::Status, check), healthTable::unknownStatus);
    m_store.cover(cellOf(Column::Summary, check), reason("No update", lastWrite));
    emit checkCovered(check);
}

} // namespace agent
