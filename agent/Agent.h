// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_AGENT_H
#define VIGIL_AGENT_AGENT_H

#include <QCoreApplication>
#include <QString>

#include <functional>

#include "agent/StateKeeper.h"
#include "agent/applications/ApplicationServer.h"
#include "agent/cells/CellStore.h"
#include "agent/cells/ServedCells.h"
#include "agent/checks/CheckList.h"
#include "agent/checks/Mutes.h"
#include "agent/control/ControlCommands.h"
#include "agent/control/ControlServer.h"
#include "agent/core/Error.h"
#include "agent/core/StateLock.h"
#include "agent/core/SystemClock.h"
#include "agent/core/UserLines.h"
#include "agent/documents/History.h"
#include "agent/http/HttpPages.h"
#include "agent/http/HttpServer.h"
#include "agent/netsnmp/SnmpEngine.h"
#include "agent/notifications/Notifications.h"
#include "agent/process/ConfigCheck.h"
#include "agent/process/Options.h"
#include "agent/serving/AgentMib.h"
#include "agent/serving/SetCoordinator.h"
#include "agent/serving/SubtreeHandler.h"

namespace agent {

/// The composition root: makes the agent's parts and connects them.
///
/// Applications publish cells on one side, managers read them over SNMP on the other.
/// Failure: start() returns why the agent cannot serve. Once started, it serves until it is destroyed.
class Agent
{
public:
    explicit Agent(const Options& options);

    /// Registers and listens. The event loop then serves managers and applications.
    Error start();

    /// Checks the configuration file, reads it again if it is correct, and logs the result.
    void reload();

    /// Saves the state for the next run. Changes are also saved soon after they happen.
    void saveState() { m_stateKeeper.save(); }

    /// Calls the listener at once and after every change of the link to snmpd.
    void setStatusListener(const std::function<void(const QString&)>& listener);

private:
    void connectParts();
    void requireDescriptors() const;
    Error lockState();
    Error listen();
    Error listenOnPassedSocket();
    Error serveHttp();
    Error serveOperators();
    std::vector<AgentFigure> figures() const;
    void reloadChecked(const QString& problem);

    const Options m_options;
    StateLock m_stateLock; // released last
    SystemClock m_clock;
    const qint64 m_startMs = m_clock.elapsedMs();
    ConfigCheck m_configCheck{m_clock, QCoreApplication::applicationFilePath()};
    UserLines m_userLines{m_clock};
    CellStore m_store;
    ServedCells m_cells;
    Mutes m_mutes{m_clock};
    CheckList m_checks{m_cells, m_mutes, m_clock};
    ApplicationServer m_applications;
    Notifications m_notifications;
    StateKeeper m_stateKeeper;
    SetCoordinator m_coordinator;
    SubtreeHandler m_handler{m_store, m_coordinator};
    AgentMib m_agentMib{m_clock, m_store, m_checks, m_applications, m_coordinator, m_notifications, m_engine};
    History m_history{m_checks, m_clock,
                      [this](ApplicationId application) { return m_applications.userOf(application); }};
    HttpPages m_pages{{m_checks, m_store, m_applications, m_clock}, m_history, [this] { return figures(); }};
    SnmpEngine m_engine; // Net-SNMP holds pointers to the others, so it is destroyed before them
    ControlCommands m_commands{{m_checks, m_store, m_applications, m_clock}, m_mutes, m_cells};
    ControlServer m_control{
        m_clock, [this](const QByteArray& line, const User& user) { return m_commands.replyTo(line, user); }};
    HttpServer m_http{m_clock, [this](const HttpRequest& request) { return m_pages.replyTo(request); }};
};

} // namespace agent

#endif
