// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_OPTIONS_H
#define VIGIL_AGENT_PROCESS_OPTIONS_H

#include <QHostAddress>
#include <QString>
#include <QStringList>

#include "agent/applications/Limits.h"
#include "agent/core/ObjectId.h"
#include "agent/process/PassedSocket.h"
#include "base/wire/DefaultServiceAddress.h"

namespace agent {

/// How the agent runs, with the defaults. CommandLine.h reads the operator's values into it.
struct Options
{
    static constexpr int learned = -1; ///< as staleAfterSeconds: each check has its own rhythm

    /// What to do: serve, or one of the operator's commands.
    enum class Task { Serve, CheckConfig, Show, InstallService, UninstallService };

    bool isStandalone() const { return !standaloneAddress.isEmpty(); }

    Task task = Task::Serve;
    bool canJoinMaster = true;    ///< false on a system without AgentX: standalone is the only way
    bool canBeService = false;    ///< false on a system where packages make the service
    bool isService = false;       ///< the service manager has started this process as a service
    QStringList serviceArguments; ///< of the service to install
    QString standaloneAddress;    ///< listening addresses as Net-SNMP writes them; empty: subagent of snmpd
    QString agentxAddress;        ///< where snmpd listens for subagents; the default is Net-SNMP's
    QString configFile;           ///< empty for none
    QString showAddress;          ///< of the agent to show, as Net-SNMP writes it
    QString community = QStringLiteral("public"); ///< to ask it with
    ObjectId subtree = enterpriseRoot();          ///< to serve: the root or a part of it
    QHostAddress listenHost = QHostAddress(QLatin1String(base::defaultServiceHost));
    quint16 listenPort = base::defaultServicePort; ///< 0 for any free port
    QHostAddress httpHost;                         ///< null: no HTTP
    quint16 httpPort = 0;                          ///< 0 for any free port
    QString controlPath;                           ///< of the operators' socket; empty for none
    int passedSocket = noSocket; ///< listens for applications in place of listenHost and listenPort
    QString stateDirectory;      ///< for what is kept over a restart; empty: nothing is
    int setTimeoutMs = 900;
    int graceSeconds = 10;     ///< from the loss of a connection to UNKNOWN
    int forgetSeconds = 86400; ///< from the loss of a connection to the removal of its cells; 0 for never
    int staleAfterSeconds = learned; ///< from the last update of a check to UNKNOWN; 0 for never
    Limits limits;
    bool isVerbose = false;
};

} // namespace agent

#endif
