// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/CheckCovers.h"

#include <utility>

#include "agent/cells/HealthTable.h"

namespace agent {

using healthTable::cellOf;
using healthTable::Column;

namespace {

std::string since(const char* what, const QDateTime& time)
{
    return QStringLiteral("%1 since %2 UTC.")
        .arg(QLatin1String(what), time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")))
        .toStdString();
}

} // namespace

CheckCovers::CheckCovers(CellStore& store, const LostApplications& lost, Clock& clock, qint64 staleAfterMs,
                         Covered covered)
    : m_store(store),
      m_lost(lost),
      m_clock(clock),
      m_covered(std::move(covered)),
      m_watch(clock, staleAfterMs,
              [this](const ObjectId& check, qint64 silentMs) { handleStale(check, silentMs); })
{}

CheckCovers::State CheckCovers::stateOf(const ObjectId& check) const
{
    const Cell* status = m_store.find(cellOf(Column::Status, check));
    if (!status || !status->cover)
        return State::AsPublished;
    return status->cover->reason == Cover::Reason::Lost ? State::Lost : State::Stale;
}

bool CheckCovers::isOfLost(const ObjectId& cell) const
{
    const Cell* found = m_store.find(cell);
    return found && m_lost.contains(found->owner);
}

// --- The events of the table

void CheckCovers::handleStatusWritten(const ObjectId& check, bool isTakenOver)
{
    if (stateOf(check) == State::Stale)
        uncoverResults(check);
    m_store.uncover(cellOf(Column::Status, check));
    m_store.uncover(cellOf(Column::Summary, check));
    if (isTakenOver)
        m_watch.handleTakenOver(check);
    else
        m_watch.handleUpdate(check);
}

void CheckCovers::handleSummaryWritten(const ObjectId& check)
{
    if (stateOf(check) == State::Stale && !isOfLost(cellOf(Column::Status, check)))
        return;
    m_store.uncover(cellOf(Column::Summary, check));
}

void CheckCovers::handleStale(const ObjectId& check, qint64 silentMs)
{
    const QDateTime lastUpdate = m_clock.nowUtc().addMSecs(-silentMs);
    const Cell* status = m_store.find(cellOf(Column::Status, check));
    if (!status)
        return;
    const Cover summary = {since("No update", lastUpdate), Cover::Reason::Stale};
    coverResults(check, status->owner, summary);
    m_store.cover(cellOf(Column::Status, check), {healthTable::unknownStatus, Cover::Reason::Stale});
    m_store.cover(cellOf(Column::Summary, check), summary);
    m_covered(check);
}

void CheckCovers::handleGraceOver(ApplicationId application, const QDateTime& lostSince)
{
    const std::string summary = since("No connection to the application", lostSince);
    coverResults({}, application, {summary, Cover::Reason::Lost});
    for (const ObjectId& id : m_store.idsOf(application, healthTable::column(Column::Status))) {
        if (const std::optional<healthTable::Position> position = healthTable::positionOf(id))
            coverLost(position->check, summary);
    }
}

void CheckCovers::coverLost(const ObjectId& check, const std::string& summary)
{
    m_store.cover(cellOf(Column::Status, check), {healthTable::unknownStatus, Cover::Reason::Lost});
    if (isOfLost(cellOf(Column::Summary, check)))
        m_store.cover(cellOf(Column::Summary, check), {summary, Cover::Reason::Lost});
    m_watch.pause(check);
    m_covered(check);
}

/// Covers the owner's results with indexes at and below tree.
void CheckCovers::coverResults(const ObjectId& tree, ApplicationId owner, const Cover& summary)
{
    for (const ObjectId& id : m_store.idsOf(owner, resultTable().cellOf(Column::Status, tree)))
        m_store.cover(id, {healthTable::unknownStatus, summary.reason});
    for (const ObjectId& id : m_store.idsOf(owner, resultTable().cellOf(Column::Summary, tree)))
        m_store.cover(id, summary);
}

void CheckCovers::uncoverResults(const ObjectId& check)
{
    const ApplicationId owner = m_store.find(cellOf(Column::Status, check))->owner;
    for (const Column column : {Column::Status, Column::Summary}) {
        for (const ObjectId& id : m_store.idsOf(owner, resultTable().cellOf(column, check)))
            m_store.uncover(id);
    }
}

void CheckCovers::handleResultWritten(const ObjectId& cell)
{
    const Cell* written = m_store.find(cell);
    const bool isCovered = written && written->cover; // hardly ever: look no further
    const std::optional<StatusTable::Position> position =
        isCovered ? resultTable().positionOf(cell) : std::nullopt;
    if (!position)
        return;
    m_store.uncover(cell);
    m_store.uncover(resultTable().cellOf(Column::Summary, position->row));
}

void CheckCovers::handleStatusRemoved(const ObjectId& check)
{
    m_watch.remove(check);
}

} // namespace agent
