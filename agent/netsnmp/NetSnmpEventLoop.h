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

/// Lets the Net-SNMP library take part in Qt's event loop. All glue between the two is here: descriptors,
/// time-outs and alarms, outstanding requests, the log.
///
/// Threads: Net-SNMP is not safe for threads; everything stays on the thread of the event loop.
/// Ownership: Net-SNMP's state is global, so there can be one such object in a process. It holds notifiers on
/// Net-SNMP's descriptors: stop() goes before Net-SNMP is shut down.
/// Failure: none of its own; Net-SNMP's errors arrive in the log.
class NetSnmpEventLoop : public QObject
{
    Q_OBJECT

public:
    NetSnmpEventLoop();
    ~NetSnmpEventLoop() override;

    /// From now on what Net-SNMP logs goes to the agent's log.
    static void bridgeLog();

    /// Net-SNMP is served from now on, as soon as the event loop runs.
    void start();
    void stop();

    /// A descriptor may have been closed and its number given to another: what is known of them is worth
    /// nothing any more.
    void watchAnew() { unwatchAll(); }

    /// While paused says true nothing is read and nothing else happens. Net-SNMP would queue a request behind
    /// the waiting SET in any case; left in the kernel, it cannot lose the TCP session that its answer needs.
    void setPaused(std::function<bool()> paused) { m_paused = std::move(paused); }

private:
    void prepareToWait();
    void watch(const std::vector<int>& descriptors);
    void unwatchAll();
    void handleReadable(int descriptor);
    void handleTimeout();

    std::function<bool()> m_paused = [] { return false; };
    std::vector<QSocketNotifier*> m_notifiers; // children of this
    QTimer m_timer;
};

} // namespace agent

#endif
