// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/ServedCells.h"

#include "agent/cells/VigilTables.h"
#include "agent/core/ShortText.h"

namespace agent {

using healthTable::Column;

namespace {

std::string start(const std::string& summary)
{
    // One byte more shows where the last character ends.
    return shortened(summary.substr(0, LostCheck::longestSummary + 1), LostCheck::longestSummary);
}

} // namespace

ServedCells::ServedCells(CellStore& store, Clock& clock, const Settings& settings)
    : m_store(store),
      m_lost(store, clock, settings.lost, *this),
      m_covers(store, m_lost, clock, settings.staleAfterMs,
               [this](const ObjectId& check) { emit checkCovered(check); })
{}

// --- What applications do

std::optional<ApplicationId> ServedCells::publish(ApplicationId application, const ObjectId& id,
                                                  const CellValue& value)
{
    const size_t sizeBefore = m_store.size();
    const std::optional<ApplicationId> previous = m_store.set(id, value, application);
    if (const std::optional<healthTable::Position> position = healthTable::positionOf(id))
        handleWritten(*position, value, previous.has_value());
    else if (resultTable().contains(id))
        handleResultWritten(id, m_store.size() > sizeBefore);
    if (!previous || !m_lost.contains(*previous))
        return previous;
    m_lost.handleCellReturned(*previous);
    return std::nullopt;
}

void ServedCells::handleWritten(const healthTable::Position& position, const CellValue& value,
                                bool isTakenOver)
{
    const auto& [column, check] = position;
    if (column == Column::Status) {
        m_covers.handleStatusWritten(check, isTakenOver);
        if (const int* status = std::get_if<int>(&value))
            emit statusWritten(check, *status);
    } else {
        m_covers.handleSummaryWritten(check);
        if (const std::string* summary = std::get_if<std::string>(&value))
            emit summaryWritten(check, *summary);
    }
}

void ServedCells::handleResultWritten(const ObjectId& id, bool isNew)
{
    m_covers.handleResultWritten(id);
    const std::optional<StatusTable::Position> position = isNew ? resultTable().positionOf(id) : std::nullopt;
    if (position && position->column == Column::Status)
        emit resultAdded(position->row);
}

size_t ServedCells::unset(ApplicationId application, const ObjectId& tree)
{
    const std::vector<ObjectId> removed = m_store.unsetTree(tree, application);
    handleRemoved(removed);
    return removed.size();
}

void ServedCells::handleRemoved(const std::vector<ObjectId>& ids)
{
    for (const ObjectId& id : ids) {
        const std::optional<healthTable::Position> position = healthTable::positionOf(id);
        if (position && position->column == Column::Status) {
            m_covers.handleStatusRemoved(position->check);
            emit checkRemoved(position->check);
            continue;
        }
        const std::optional<StatusTable::Position> result = resultTable().positionOf(id);
        if (result && result->column == Column::Status)
            emit resultRemoved(result->row);
    }
}

bool ServedCells::lose(const Owner& owner)
{
    if (m_store.countOf(owner.application) == 0)
        return false;
    m_store.dropCommitted(owner.application);
    m_lost.add(owner);
    return true;
}

// --- What the agent keeps over a restart

std::vector<LostCheck> ServedCells::checksOf(ApplicationId application) const
{
    std::vector<LostCheck> checks;
    for (const ObjectId& id : m_store.idsOf(application, healthTable::column(Column::Status))) {
        const int* status = std::get_if<int>(&m_store.find(id)->value);
        const std::optional<healthTable::Position> position = healthTable::positionOf(id);
        if (!status || !position)
            continue;
        const Cell* summary = m_store.find(healthTable::cellOf(Column::Summary, position->check));
        const std::string* text = summary ? std::get_if<std::string>(&summary->value) : nullptr;
        checks.push_back({position->check, *status, text ? start(*text) : std::string()});
    }
    return checks;
}

std::optional<LostCheck> ServedCells::shownCheck(const ObjectId& check) const
{
    const Cell* status = m_store.find(healthTable::cellOf(Column::Status, check));
    const int* number = status ? std::get_if<int>(&status->served()) : nullptr;
    if (!number)
        return std::nullopt;
    const Cell* summary = m_store.find(healthTable::cellOf(Column::Summary, check));
    const std::string* text = summary ? std::get_if<std::string>(&summary->served()) : nullptr;
    return LostCheck{check, *number, text ? start(*text) : std::string()};
}

ApplicationId ServedCells::ownerOf(const ObjectId& check) const
{
    return m_store.find(healthTable::cellOf(Column::Status, check))->owner;
}

void ServedCells::restore(const Owner& owner, const QDateTime& since, const std::vector<LostCheck>& checks)
{
    for (const LostCheck& check : checks) {
        const ObjectId status = healthTable::cellOf(Column::Status, check.check);
        const bool fits = status.size() <= maxArcs && !vigilTables::checkCell(status, check.status);
        if (m_store.find(status) || !fits)
            continue;
        m_store.set(status, check.status, owner.application);
        m_store.set(healthTable::cellOf(Column::Summary, check.check), check.summary, owner.application);
        emit checkRestored(check.check);
    }
    if (m_store.countOf(owner.application) > 0)
        m_lost.restore(owner, since);
}

// --- What happens to the cells of lost applications

void ServedCells::cover(ApplicationId application, const QDateTime& lostSince)
{
    m_covers.handleGraceOver(application, lostSince);
}

void ServedCells::remove(ApplicationId application, size_t most)
{
    const std::vector<ObjectId> ids = m_store.firstOf(application, most);
    for (const ObjectId& id : ids) {
        const std::optional<healthTable::Position> position = healthTable::positionOf(id);
        const bool isCheck = position && position->column == Column::Status;
        if (isCheck && m_covers.stateOf(position->check) == CheckCovers::State::Lost)
            emit checkForgotten(position->check);
    }
    m_store.remove(application, ids);
    handleRemoved(ids);
}

void ServedCells::end(ApplicationId application)
{
    emit applicationGone(application);
}

} // namespace agent
