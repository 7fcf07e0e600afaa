// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICEMANAGER_H
#define VIGIL_AGENT_PROCESS_SERVICEMANAGER_H

#include <QString>
#include <QTimer>

namespace agent {

/// What the host's service manager hears of the agent.
///
/// Purpose: tells when the agent is ready, how things stand, and when it ends. If the manager has a watchdog,
/// it is fed from the event loop for as long as the object lives: an agent whose loop hangs is restarted.
///
/// Threads: that of the event loop. Failure: none; without a service manager nothing happens.
class ServiceManager
{
public:
    ServiceManager();

    void tellReady();
    void tellStatus(const QString& text);
    void tellStopping();

private:
    QTimer m_watchdog;
};

} // namespace agent

#endif
