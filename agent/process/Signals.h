// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SIGNALS_H
#define VIGIL_AGENT_PROCESS_SIGNALS_H

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace agent {

/// SIGTERM, SIGINT and SIGHUP as events of the event loop.
///
/// Threads: one object, on the main thread. Failure: without a pipe the signals end the process at once, as
/// they do by default.
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
