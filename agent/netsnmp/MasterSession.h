// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MASTERSESSION_H
#define VIGIL_AGENT_NETSNMP_MASTERSESSION_H

#include <QObject>

#include "agent/core/ObjectId.h"

namespace agent {

/// A session with snmpd, as MasterLink uses it. Tests replace it with a snmpd of their own.
///
/// Each request gets one of answered() and unanswered(), unless the session closes first. Only one request
/// may be open at a time.
class MasterSession : public QObject
{
    Q_OBJECT

public:
    static constexpr long noError = 0;
    static constexpr long notOpenError = 257; ///< snmpd does not know the session (RFC 2741)

    /// Connects and opens the session; false if snmpd cannot be reached. Blocks, for a bounded time.
    virtual bool open() = 0;

    /// Requests to register the tree. False if the request cannot be sent.
    virtual bool registerTree(const ObjectId& tree) = 0;

    /// Asks whether snmpd still serves the session. False if the request cannot be sent.
    virtual bool ping() = 0;

    /// Gives up the connection; closed() follows.
    virtual void hangUp() = 0;

signals:
    void answered(long error);
    void unanswered(); ///< the reply has timed out
    void closed();
};

} // namespace agent

#endif
