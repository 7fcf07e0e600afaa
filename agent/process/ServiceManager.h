// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICEMANAGER_H
#define VIGIL_AGENT_PROCESS_SERVICEMANAGER_H

#include <QString>
#include <QTimer>

namespace agent {

/// Tells the host's service manager when the agent is ready, its state, and when it stops. Does nothing on a
/// host without a service manager.
///
/// It feeds the manager's watchdog from the event loop, so an agent whose loop hangs is restarted.
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
