// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_NETSNMPEVENTLOOP_H
#define VIGIL_AGENT_NETSNMP_NETSNMPEVENTLOOP_H

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <vector>

namespace agent {

/// Runs the Net-SNMP library in Qt's event loop. All glue between the two is here: descriptors, time-outs and
/// alarms, outstanding requests, the log.
///
/// Net-SNMP waits on its own clock. The loop asks it before each wait how long that is, so a timer that is
/// early or late only makes it ask again.
///
/// Threads: Net-SNMP is not thread-safe; everything stays on the thread of the event loop.
/// Ownership: Net-SNMP's state is global, so one object per process. It watches Net-SNMP's descriptors: call
/// stop() before Net-SNMP is shut down.
class NetSnmpEventLoop : public QObject
{
    Q_OBJECT

public:
    NetSnmpEventLoop();
    ~NetSnmpEventLoop() override;

    /// Sends Net-SNMP's log lines to the agent's log.
    static void bridgeLog();

    /// Serves Net-SNMP once the event loop runs.
    void start();
    void stop();

    /// Forgets all descriptors, since one may have been closed and its number reused.
    void watchAgain() { unwatchAll(); }

    /// While paused() is true, nothing is read and no timer runs. Net-SNMP would queue every request until
    /// the pending SET is done, and a close read now would end the TCP session for the SET's reply.
    void setPaused(std::function<bool()> paused) { m_paused = std::move(paused); }

private:
    void prepareToWait();
    void watch(const std::vector<int>& descriptors);
    void unwatchAll();
    void handleReadable();
    static bool serveReadable(long waitUs);
    void handleTimeout();

    std::function<bool()> m_paused = [] { return false; };
    std::vector<QSocketNotifier*> m_notifiers; // children of this
    QTimer m_timer;
};

} // namespace agent

#endif
