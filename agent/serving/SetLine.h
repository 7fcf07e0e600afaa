// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_SETLINE_H
#define VIGIL_AGENT_SERVING_SETLINE_H

#include <QString>
#include <QStringList>

#include "agent/cells/CellStore.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// The line in the log about one SET: who, what, from what to what, and the answer. It is written when the
/// SET ends, however that happens.
///
/// Ownership: Net-SNMP's request owns it.
class SetLine
{
public:
    /// Attaches a line to the requests of a SET. Call it when the SET begins.
    static void begin(const netsnmp_agent_request_info& info, netsnmp_request_info* requests,
                      const CellStore& store);

    /// The answer to the manager. The first error counts.
    static void setAnswer(netsnmp_request_info* requests, int errorStatus);

private:
    SetLine(QString who, QStringList changes);
    ~SetLine();
    static void release(void* line);

    const QString m_who;
    const QStringList m_changes;
    int m_answer = -1; // none yet
};

} // namespace agent

#endif
