#ifndef VIGIL_AGENT_SNMPENGINE_H
#define VIGIL_AGENT_SNMPENGINE_H

#include <QString>
#include <QTemporaryDir>

#include <functional>

#include "NetSnmpEventLoop.h"

namespace agent {

/// The Net-SNMP agent library as this agent uses it: its configuration, its role, its addresses.
///
/// Purpose: nothing outside the given configuration is read and nothing is left behind on disk, so that the
/// agent does the same on every host.
///
/// Threads: Net-SNMP is not safe for threads; everything stays on the thread of the event loop.
/// Ownership: Net-SNMP's state is global, so there can be one engine in a process.
/// Failure: initialise() and listen() say in text why the agent cannot serve.
class SnmpEngine
{
public:
    struct Settings
    {
        QString address;    ///< listening addresses, comma-separated
        QString configFile; ///< empty: the built-in read-only access from this host
    };

    explicit SnmpEngine(const Settings& settings);
    ~SnmpEngine();
    SnmpEngine(const SnmpEngine&) = delete;
    SnmpEngine& operator=(const SnmpEngine&) = delete;

    /// Reads the configuration. Returns what is wrong, or an empty text.
    QString initialise();

    /// Opens the addresses. Returns what is wrong, or an empty text. Handlers are registered before it.
    QString listen();

    /// See NetSnmpEventLoop.
    void setPaused(std::function<bool()> paused) { m_eventLoop.setPaused(std::move(paused)); }

private:
    QString configurationProblem() const;

    const Settings m_settings;
    QTemporaryDir m_directory;
    NetSnmpEventLoop m_eventLoop;
    bool m_isInitialised = false;
};

} // namespace agent

#endif
