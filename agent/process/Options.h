// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_OPTIONS_H
#define VIGIL_AGENT_PROCESS_OPTIONS_H

#include <QHostAddress>
#include <QString>
#include <QStringList>

#include "agent/applications/Limits.h"
#include "agent/core/ObjectId.h"
#include "base/wire/Protocol.h"

namespace agent {

/// What the command line asks for.
///
/// Purpose: every value is checked here, so that the rest of the agent can rely on it.
/// Threads: plain values. Failure: parse() says in text what is wrong.
struct Options
{
    enum class Action { Run, PrintText, Fail };

    /// Reads the arguments, the program's name first. text is what there is to print: the help, the version
    /// or the error.
    static Action parse(const QStringList& arguments, Options& options, QString& text);

    bool isStandalone() const { return !standaloneAddress.isEmpty(); }

    QString standaloneAddress; ///< one or more listening addresses in Net-SNMP's notation; empty: subagent
    QString agentxAddress;     ///< of the host's snmpd; empty for Net-SNMP's default
    QString configFile;        ///< empty for none
    ObjectId subtree = enterpriseRoot(); ///< what is served: the root or part of it
    QHostAddress listenHost = QHostAddress(QHostAddress::LocalHost);
    quint16 listenPort = base::defaultServicePort; ///< 0 for any free one
    int setTimeoutMs = 900;
    int graceSeconds = 10;     ///< from the loss of a connection to UNKNOWN
    int forgetSeconds = 86400; ///< from the loss of a connection to the end of its cells; 0 for never
    int staleAfterSeconds = 0; ///< from the last update of a check to UNKNOWN; 0 for never
    Limits limits;
    bool isVerbose = false;
};

} // namespace agent

#endif
