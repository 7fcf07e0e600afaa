// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_STATEKEEPER_H
#define VIGIL_AGENT_STATEKEEPER_H

#include <QByteArray>
#include <QObject>

#include "agent/applications/ApplicationServer.h"
#include "agent/cells/ServedCells.h"
#include "agent/checks/Mutes.h"
#include "agent/core/StateFile.h"
#include "agent/core/Timer.h"
#include "agent/notifications/Notifications.h"
#include "agent/process/SavedState.h"

namespace agent {

/// Keeps over a restart of the agent: lost applications with their health checks, notified statuses, mutes,
/// and checks forgotten while muted. A connected application is kept with the checks managers know as not
/// OK: if it does not come back, it is lost like any other.
///
/// Ownership: everything it is given must outlive it.
/// Failure: an unreadable or unwritable file is logged; the agent serves without it. It tries again to write
/// every 5 seconds.
class StateKeeper : public QObject
{
    Q_OBJECT

public:
    /// path is the file's; with an empty one nothing is kept.
    StateKeeper(const ServedCells& cells, ApplicationServer& applications, Notifications& notifications,
                Mutes& mutes, Clock& clock, const QString& path);

    /// Restores the state of the last run. Managers hear of losses too old by now. The
    /// notified statuses of other checks are forgotten after forgetMs (-1: never). From now on changes are
    /// saved within a second.
    void restore(qint64 forgetMs);

    /// Saves at once, if anything has changed.
    void save();

private:
    void saveSoon();
    SavedState current() const;

    const ServedCells& m_cells;
    ApplicationServer& m_applications;
    Notifications& m_notifications;
    Mutes& m_mutes;
    const StateFile m_file;
    const bool m_isOn;
    QByteArray m_saved; // a fingerprint of the lines in the file
    bool m_isWarned = false;
    Timer m_delay;
};

} // namespace agent

#endif
