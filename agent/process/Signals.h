// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SIGNALS_H
#define VIGIL_AGENT_PROCESS_SIGNALS_H

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace agent {

/// Turns SIGTERM, SIGINT and SIGHUP into events of the event loop.
///
/// Threads: the main thread. One object per process.
/// Failure: without a pipe the signals end the process at once, as they do by default.
class Signals : public QObject
{
    Q_OBJECT

public:
    Signals();
    ~Signals() override;

signals:
    void endRequested();    ///< SIGTERM, SIGINT
    void reloadRequested(); ///< SIGHUP

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace agent

#endif
