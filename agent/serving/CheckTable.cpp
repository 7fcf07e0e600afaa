// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/CheckTable.h"

#include <limits>

#include "agent/checks/ReadableText.h"
#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

// The arcs in the MIB, and its names without "vigilAgent".
constexpr unsigned int checkTableArc = 4;
enum CheckColumn : unsigned int {
    CheckFirstKey = 2,
    CheckSecondKey,
    CheckName,
    CheckStatus,
    CheckSeverity,
    CheckSummary,
    CheckSince,
    CheckLastUpdate,
    CheckAge,
    CheckUpdates,
    CheckConnection,
    CheckMuted
};

/// Largest before the first update.
quint64 ageOf(const Check& check)
{
    constexpr qint64 msPerSecond = 1000;
    return check.ageMs < 0 ? std::numeric_limits<quint32>::max()
                           : static_cast<quint64>(check.ageMs / msPerSecond);
}

/// At least 1 while the check is muted.
quint64 secondsLeft(const Check& check)
{
    constexpr qint64 msPerSecond = 1000;
    return static_cast<quint64>((check.mutedMs + msPerSecond - 1) / msPerSecond);
}

void putColumn(netsnmp_variable_list* varbind, unsigned int column, const Check& check)
{
    switch (column) {
    case CheckFirstKey:
        return putText(varbind, QByteArray::fromStdString(check.firstKey));
    case CheckSecondKey:
        return putText(varbind, QByteArray::fromStdString(check.secondKey));
    case CheckName:
        return putText(varbind, QByteArray::fromStdString(check.name));
    case CheckStatus:
        return putNumber(varbind, ASN_INTEGER, static_cast<quint64>(check.status));
    case CheckSeverity:
        return putNumber(varbind, ASN_INTEGER, static_cast<quint64>(check.severity()));
    case CheckSummary:
        return putText(varbind, QByteArray::fromStdString(readableText(check.summary, maxAdminString)));
    case CheckSince:
        return putTime(varbind, check.since);
    case CheckLastUpdate:
        return putTime(varbind, check.lastUpdate);
    case CheckAge:
        return putGauge(varbind, ageOf(check));
    case CheckUpdates:
        return putNumber(varbind, ASN_COUNTER, check.updates);
    case CheckConnection:
        return putNumber(varbind, ASN_UNSIGNED, check.application);
    case CheckMuted:
        return putGauge(varbind, secondsLeft(check));
    default:
        break;
    }
}

} // namespace

CheckTable::CheckTable(const CheckList& checks)
    : ReadOnlyTable("vigilAgentCheckTable", below(agentMibRoot(), {checkTableArc}), CheckFirstKey,
                    CheckMuted),
      m_checks(checks)
{}

std::optional<ObjectId> CheckTable::nextRow(const ObjectId& after) const
{
    const std::optional<unsigned int> number = m_checks.numberAfter(after.empty() ? 0 : after.front());
    return number ? std::optional<ObjectId>(ObjectId{*number}) : std::nullopt;
}

bool CheckTable::put(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const
{
    const std::optional<Check> check = row.size() == 1 ? m_checks.find(row.front()) : std::nullopt;
    if (check)
        putColumn(varbind, column, *check);
    return check.has_value();
}

} // namespace agent
