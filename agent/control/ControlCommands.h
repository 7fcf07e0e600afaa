// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CONTROL_CONTROLCOMMANDS_H
#define VIGIL_AGENT_CONTROL_CONTROLCOMMANDS_H

#include <QJsonObject>

#include <optional>

#include "agent/cells/ServedCells.h"
#include "agent/checks/Mutes.h"
#include "agent/control/ControlReply.h"
#include "agent/documents/ChecksJson.h"

namespace agent {

/// What operators may ask for. A request is a JSON object in one line, and so is the reply:
///
///     {"command":"checks"}                                             ChecksJson
///     {"command":"mute","check":7,"name":"shop/web","seconds":7200}    {"check":7,"name":…,"mutedUntil":…}
///     {"command":"unmute","check":7,"name":"shop/web"} {"check":7,"name":…,"mutedUntil":null}
///     {"command":"forget","application":4}                             {"application":4,"name":…,"cells":…}
///
/// A refused request has the reply {"error":"…"} and changes nothing. The numbers are those of ChecksJson.
/// The name makes sure that a number still means the same check.
///
/// Ownership: everything it is given must outlive it.
class ControlCommands
{
public:
    ControlCommands(const ChecksJson::Sources& sources, Mutes& mutes, ServedCells& cells)
        : m_sources(sources), m_mutes(mutes), m_cells(cells)
    {}

    ControlReply replyTo(const QByteArray& line, const User& user);

private:
    QByteArray mute(const QJsonObject& request, const User& user);
    QByteArray unmute(const QJsonObject& request, const User& user);
    QByteArray forget(const QJsonObject& request, const User& user);
    std::optional<Check> checkIn(const QJsonObject& request) const;

    const ChecksJson::Sources m_sources;
    Mutes& m_mutes;
    ServedCells& m_cells;
};

} // namespace agent

#endif
