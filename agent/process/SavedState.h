// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SAVEDSTATE_H
#define VIGIL_AGENT_PROCESS_SAVEDSTATE_H

#include <QStringList>

#include <map>
#include <vector>

#include "agent/applications/SavedApplication.h"
#include "agent/core/Mute.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The state the agent keeps over a restart: the status managers know of a check, the lost applications with
/// their checks, the connected ones with those checks managers know as not OK, the muted checks, and those
/// forgotten while muted.
///
/// As text it has a line for each of them. The checks of an application follow its own line:
///
///     lost 2026-01-31T12:34:56Z 1001 4711 127.0.0.1 40112 shop-server
///     check 0 4.115.104.111.112.3.119.101.98 all%20is%20well
///     connected 2026-01-31T12:00:00Z 1001 4712 127.0.0.1 40114 shop-database
///     check 2 4.115.104.111.112.2.100.98 it%20is%20full
///     notified 2 4.115.104.111.112.2.100.98
///     muted 2026-01-31T14:00:00Z 7200 4.115.104.111.112.2.100.98
///     forgotten 3 4.115.104.111.112.3.97.112.105 no%20connection
struct SavedState
{
    std::vector<SavedApplication> applications;
    std::map<ObjectId, int> notified; ///< by the index of the check's row
    std::map<ObjectId, Mute> mutes;
    std::vector<LostCheck> forgotten; ///< while muted; managers have not heard so yet

    QStringList toLines() const;

    /// The lines without meaning are left out. So are the checks of an application whose own line has none.
    struct Wrong
    {
        int lines = 0;
        int first = 0; ///< its number in the file, from 1
    };
    Wrong readLines(const QStringList& lines);

private:
    bool readLine(const QStringList& words);
    bool readApplication(const QStringList& words);
    bool readMute(const QStringList& words);
    bool readCheck(const QStringList& words);

    bool m_hasApplication = false; // the last application's line had a meaning
};

} // namespace agent

#endif
