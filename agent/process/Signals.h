// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SIGNALS_H
#define VIGIL_AGENT_PROCESS_SIGNALS_H

#include <QObject>

#include <memory>

namespace agent {

/// Turns what the system wants of the process into events of the event loop. One source file for each system.
///
///                        POSIX              Windows
///     endRequested()     SIGTERM, SIGINT    Ctrl-C, closing the console, the end of the session, shutdown
///     reloadRequested()  SIGHUP             Ctrl-Break
///
/// Threads: the main thread. One object per process.
/// Failure: if the system has no resources left, the signals end the process at once, as they do by default.
class Signals : public QObject
{
    Q_OBJECT

public:
    Signals();
    ~Signals() override;

signals:
    void endRequested();
    void reloadRequested();

private:
    struct System;
    std::unique_ptr<System> m_system;
};

} // namespace agent

#endif
