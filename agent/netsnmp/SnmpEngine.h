// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_SNMPENGINE_H
#define VIGIL_AGENT_NETSNMP_SNMPENGINE_H

#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

#include "agent/core/Error.h"
#include "agent/core/ObjectId.h"
#include "agent/netsnmp/MasterLink.h"
#include "agent/netsnmp/NetSnmpEventLoop.h"

namespace agent {

/// The Net-SNMP agent library as this agent uses it: its configuration, its role, its addresses.
///
/// Purpose: either an SNMP agent of its own or, by default, a subagent of the host's snmpd. Nothing outside
/// the given configuration is read and nothing is left behind on disk, so that the agent does the same on
/// every host.
///
/// Threads: Net-SNMP is not safe for threads; everything stays on the thread of the event loop.
/// Ownership: Net-SNMP's state is global, so there can be one engine in a process.
/// Failure: initialise() and start() say in text why the agent cannot serve.
class SnmpEngine
{
public:
    struct Settings
    {
        QString standaloneAddress; ///< listening addresses, comma-separated; empty: joins the host's snmpd
        QString configFile;        ///< standalone; empty: the built-in read-only access from this host
        QString agentxAddress;     ///< where the host's snmpd listens for subagents
        ObjectId subtree;          ///< what is registered there
    };

    explicit SnmpEngine(const Settings& settings);
    ~SnmpEngine();
    SnmpEngine(const SnmpEngine&) = delete;
    SnmpEngine& operator=(const SnmpEngine&) = delete;

    /// Where snmpd listens for subagents if nothing else is configured; set when Net-SNMP was built.
    static QString defaultAgentxAddress();

    /// Makes Net-SNMP ready for handlers.
    Error initialise();

    /// Reads the configuration and opens the addresses, or joins snmpd now or later. Register all handlers
    /// first.
    Error start();

    /// Reads the configuration file again. An error changes nothing.
    Error reload();

    /// One line about how things stand, for whoever looks after the agent; also called at every change.
    QString statusText() const;
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
    NetSnmpEventLoop m_eventLoop;
    std::unique_ptr<MasterLink> m_link; // null when standalone
    bool m_isRunning = false;
};

} // namespace agent

#endif
