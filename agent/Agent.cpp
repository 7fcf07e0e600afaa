// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/Agent.h"

#include "agent/core/Descriptors.h"
#include "agent/core/HostAndPort.h"
#include "agent/core/Log.h"
#include "agent/netsnmp/AgentxLimit.h"
#include "agent/netsnmp/SnmpListener.h"

namespace agent {

namespace {

/// The file of this name in the state directory; empty without such a directory.
QString stateFile(const Options& options, const char* name)
{
    if (options.stateDirectory.isEmpty())
        return {};
    return options.stateDirectory + QLatin1Char('/') + QLatin1String(name);
}

qint64 forgetMs(const Options& options)
{
    return options.forgetSeconds > 0 ? options.forgetSeconds * qint64(1000) : DelayQueue<ObjectId>::never;
}

qint64 staleAfterMs(int seconds)
{
    if (seconds == Options::learned)
        return UpdateWatch::learned;
    return seconds > 0 ? seconds * qint64(1000) : UpdateWatch::never;
}

ServedCells::Settings settingsOf(const Options& options)
{
    constexpr qint64 second = 1000;
    ServedCells::Settings settings;
    settings.lost.graceMs = options.graceSeconds * second;
    settings.lost.forgetMs = forgetMs(options);
    settings.staleAfterMs = staleAfterMs(options.staleAfterSeconds);
    settings.lost.maxApplications = static_cast<size_t>(options.limits.connections);
    settings.lost.maxCells = options.limits.lostCells();
    return settings;
}

} // namespace

Agent::Agent(const Options& options)
    : m_options(options),
      m_cells(m_store, m_clock, settingsOf(options)),
      m_applications(m_cells, m_clock, options.limits),
      m_notifications(m_cells, m_mutes, m_clock, options.limits.notificationMemory()),
      m_stateKeeper(m_cells, m_applications, m_notifications, m_mutes, m_clock, stateFile(options, "state")),
      m_coordinator(m_store, m_applications, m_clock, options.setTimeoutMs),
      m_engine({options.standaloneAddress, options.configFile, options.agentxAddress, options.subtree,
                stateFile(options, "engine")},
               m_clock)
{
    connectParts();
}

void Agent::connectParts()
{
    QObject::connect(&m_applications, &ApplicationServer::answered, &m_coordinator,
                     &SetCoordinator::handleAnswer);
    QObject::connect(&m_applications, &ApplicationServer::lost, &m_coordinator, &SetCoordinator::handleLost);
    QObject::connect(&m_applications, &ApplicationServer::notificationWanted, &m_notifications,
                     &Notifications::notifyOfValue);
    if (!m_options.isStandalone())
        m_handler.setMaxMessage(AgentxLimit::maxMessage);
    QObject::connect(&m_configCheck, &ConfigCheck::finished, &m_applications,
                     [this](const QString& problem) { reloadChecked(problem); });
    m_notifications.setReady([this] { return m_engine.canNotify(); });
    m_engine.setPaused([this] { return m_handler.isWaiting(); });
}

void Agent::requireDescriptors() const
{
    const int managers = m_options.isStandalone() ? snmpListener::maxConnections : 0;
    if (!descriptors::require(m_options.limits.connections + managers))
        log::warning(QStringLiteral("the limit of open files is too low for --max-connections %1; "
                                    "applications may be turned away. Raise LimitNOFILE= in the unit")
                         .arg(m_options.limits.connections));
}

/// Before the first file in it is read or written.
Error Agent::lockState()
{
    return m_options.stateDirectory.isEmpty() ? Error() : m_stateLock.take(m_options.stateDirectory);
}

Error Agent::start()
{
    requireDescriptors();
    if (Error error = lockState())
        return error;
    if (Error error = m_engine.initialise())
        return error;
    if (Error error = m_handler.registerSubtree(m_options.subtree))
        return error;
    if (Error error = m_agentMib.registerObjects())
        return error;
    if (Error error = m_engine.start())
        return error;
    m_stateKeeper.restore(forgetMs(m_options));
    if (Error error = listen())
        return error;
    if (Error error = serveHttp())
        return error;
    if (Error error = serveOperators())
        return error;
    if (m_options.isStandalone())
        log::info(m_engine.statusText());
    log::info(QStringLiteral("listening for applications on %1").arg(m_applications.address()));
    return {};
}

Error Agent::listen()
{
    if (m_options.passedSocket != noSocket)
        return listenOnPassedSocket();
    const Error error = m_applications.listen(m_options.listenHost, m_options.listenPort);
    if (!error)
        return {};
    return Error(QStringLiteral("cannot listen for applications on %1: %2. Stop the other agent, or choose "
                                "another port with --listen")
                     .arg(hostAndPort(m_options.listenHost, m_options.listenPort), error.text()));
}

Error Agent::listenOnPassedSocket()
{
    if (const Error error = m_applications.listen(m_options.passedSocket))
        return Error(
            QStringLiteral("cannot listen on the socket of the service manager: %1").arg(error.text()));
    const Options defaults;
    const bool isChosen =
        m_options.listenHost != defaults.listenHost || m_options.listenPort != defaults.listenPort;
    if (isChosen)
        log::warning(
            QStringLiteral("--listen has no effect: the service manager passes the socket of %1; set "
                           "the address in the socket unit")
                .arg(m_applications.address()));
    return {};
}

Error Agent::serveHttp()
{
    const QHostAddress& host = m_options.httpHost;
    if (host.isNull())
        return {};
    if (const Error error = m_http.listen(host, m_options.httpPort))
        return Error(QStringLiteral("cannot serve HTTP on %1: %2. Choose another address with --http")
                         .arg(hostAndPort(host, m_options.httpPort), error.text()));
    m_history.start();
    log::info(QStringLiteral("serving the page on http://%1/").arg(m_http.address()));
    if (!host.isLoopback())
        log::warning(QStringLiteral("everyone who can reach http://%1/ reads all values, without a password")
                         .arg(m_http.address()));
    return {};
}

Error Agent::serveOperators()
{
    const QString& path = m_options.controlPath;
    if (path.isEmpty())
        return {};
    if (const Error error = m_control.listen(path))
        return Error(
            QStringLiteral("cannot listen for operators on %1: %2. Choose another path with --control")
                .arg(path, error.text()));
    log::info(QStringLiteral("listening for operators on %1").arg(path));
    return {};
}

/// Also in VIGIL-AGENT-MIB.
std::vector<AgentFigure> Agent::figures() const
{
    constexpr double msPerSecond = 1000;
    const auto number = [](auto value) { return static_cast<double>(value); };
    const ApplicationServer::Counts& applications = m_applications.counts();
    const SetCoordinator::Counts& sets = m_coordinator.counts();
    return {
        {"uptime_seconds", "Time since the start.", false,
         number(m_clock.elapsedMs() - m_startMs) / msPerSecond},
        {"cells", "Published cells.", false, number(m_store.size())},
        {"memory_bytes", "Memory for applications.", false,
         number(m_applications.memory() + m_notifications.memory())},
        {"memory_limit_bytes", "Limit of this memory.", false, number(m_applications.memoryLimit())},
        {"connections_refused", "Applications turned away.", true, number(applications.connectionsRefused)},
        {"protocol_errors", "Connections closed for bad bytes.", true, number(applications.protocolErrors)},
        {"takeovers_refused", "Cells of another user.", true, number(applications.takeoversRefused)},
        {"sets_forwarded", "SETs forwarded to applications.", true, number(sets.forwarded)},
        {"sets_refused", "SETs refused by applications.", true, number(sets.refused)},
        {"sets_timed_out", "SETs without an answer.", true, number(sets.timedOut)},
        {"sets_failed_at_once", "SETs not forwarded.", true, number(sets.failedAtOnce)},
        {"notifications_sent", "Notifications sent.", true, number(m_notifications.sent())},
        {"notifications_dropped", "Notifications dropped.", true, number(m_notifications.dropped())},
        {"rejoins", "Times the agent joined snmpd again.", true, number(m_engine.rejoins())},
    };
}

void Agent::reload()
{
    if (const Error error = m_engine.checkReloadable())
        reloadChecked(error.text());
    else
        m_configCheck.start(m_options.configFile);
}

void Agent::reloadChecked(const QString& problem)
{
    if (!problem.isEmpty())
        return log::warning(QStringLiteral("SIGHUP changes nothing: %1").arg(problem));
    m_engine.reload();
    log::info(QStringLiteral("the configuration file %1 has been read again").arg(m_options.configFile));
}

void Agent::setStatusListener(const std::function<void(const QString&)>& listener)
{
    m_engine.setStatusListener(listener);
}

} // namespace agent
