// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICEMANAGER_H
#define VIGIL_AGENT_PROCESS_SERVICEMANAGER_H

#include <QObject>
#include <QString>

#include <memory>

#include "agent/core/Clock.h"
#include "agent/core/Error.h"

namespace agent {

/// The host's service manager, if it runs the agent. One source file for each service manager, and one for
/// hosts without. A call without an entry here does nothing.
///
///                          systemd            Windows
///     attach()                                start pending; messages go to the event log
///     tellReady()          ready              running
///     tellStatus()         status
///     tellStopping()       stopping           stop pending
///     tellStopped()                           stopped, with the exit code
///     endRequested()                          stop, shutdown; pause is refused
///     reloadRequested()                       paramchange
///
/// systemd asks with signals, see Signals. Its watchdog is fed from the event loop, so an agent whose loop
/// hangs is restarted.
///
/// Threads: the main thread. One object per process.
/// Failure: a message to the service manager may be lost.
class ServiceManager : public QObject
{
    Q_OBJECT

public:
    explicit ServiceManager(Clock& clock);
    ~ServiceManager() override;

    /// Call it first if the service manager has started this process as a service (--service). Fails if it
    /// has not.
    Error attach();

    void tellReady();
    void tellStatus(const QString& text);
    void tellStopping();

    /// Ends the process's life as a service. The caller has nothing left to do but to exit.
    void tellStopped(int exitCode);

signals:
    void endRequested();
    void reloadRequested();

private:
    struct System;
    std::unique_ptr<System> m_system;
};

} // namespace agent

#endif
