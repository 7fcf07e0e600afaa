// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_SNMPENGINE_H
#define VIGIL_AGENT_NETSNMP_SNMPENGINE_H

#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

#include "agent/core/Clock.h"
#include "agent/core/Error.h"
#include "agent/core/ObjectId.h"
#include "agent/netsnmp/AgentxSession.h"
#include "agent/netsnmp/EngineIdentity.h"
#include "agent/netsnmp/MasterLink.h"
#include "agent/netsnmp/NamedReceivers.h"
#include "agent/netsnmp/NetSnmpEventLoop.h"
#include "agent/netsnmp/ReplayGuard.h"

namespace agent {

/// Configures and runs the Net-SNMP agent library, either as an SNMP agent of its own or, by default, as a
/// subagent of the host's snmpd. It reads nothing but the given configuration and the engine file, so it
/// behaves the same on every host.
///
/// Threads: Net-SNMP is not thread-safe; everything stays on the thread of the event loop.
/// Ownership: Net-SNMP's state is global, so one engine per process.
class SnmpEngine
{
public:
    struct Settings
    {
        QString standaloneAddress; ///< comma-separated; empty: subagent of the host's snmpd
        QString configFile;        ///< standalone only; empty: this host may read
        QString agentxAddress;     ///< where the host's snmpd listens for subagents
        ObjectId subtree;          ///< registered with snmpd
        QString engineFile = {};   ///< keeps the SNMPv3 engine over a restart; standalone only; empty: none
    };

    SnmpEngine(const Settings& settings, Clock& clock);
    ~SnmpEngine();
    SnmpEngine(const SnmpEngine&) = delete;
    SnmpEngine& operator=(const SnmpEngine&) = delete;

    /// Where snmpd listens for subagents if nothing else is configured; set when Net-SNMP was built. Empty on
    /// a system where no agent can join a master.
    static QString defaultAgentxAddress();

    /// Makes Net-SNMP ready for handlers.
    Error initialise();

    /// Reads the configuration and opens the addresses, or joins snmpd now or later. Register all handlers
    /// first.
    Error start();

    /// Reads the configuration file, and nothing else. Call it alone, on an engine for standalone use.
    Error check();

    /// Says why there is nothing to reload, if so.
    Error checkReloadable() const;

    /// Reads the configuration file again. The caller has checked it: wrong lines are skipped.
    void reload();

    /// How often it has joined snmpd again after a loss.
    quint64 rejoins() const { return m_link ? m_link->rejoins() : 0; }

    /// False while there is no snmpd to pass notifications to.
    bool canNotify() const { return !m_link || m_link->isServing(); }

    /// The state in one line, for the operator.
    QString statusText() const;

    /// Calls the listener at once and after every change.
    void setStatusListener(const std::function<void(const QString&)>& listener);

    /// See NetSnmpEventLoop.
    void setPaused(std::function<bool()> paused) { m_eventLoop.setPaused(std::move(paused)); }

private:
    bool isStandalone() const { return !m_settings.standaloneAddress.isEmpty(); }
    Error checkConfiguration() const;
    void takeConfiguration();
    Error listen();

    const Settings m_settings;
    QTemporaryDir m_directory;
    EngineIdentity m_identity;
    NetSnmpEventLoop m_eventLoop;
    NamedReceivers m_receivers;
    ReplayGuard m_replayGuard;
    std::unique_ptr<AgentxSession> m_session; // null when standalone
    std::unique_ptr<MasterLink> m_link;       // null when standalone
    bool m_isRunning = false;
};

} // namespace agent

#endif
