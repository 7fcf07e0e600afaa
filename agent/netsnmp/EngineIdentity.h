// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_ENGINEIDENTITY_H
#define VIGIL_AGENT_NETSNMP_ENGINEIDENTITY_H

#include <QByteArray>
#include <QString>

#include "agent/core/Error.h"
#include "agent/core/StateFile.h"

namespace agent {

/// Keeps the SNMPv3 engine id over a restart and counts the restarts. Otherwise managers would not recognise
/// the agent, and a recorded SET could be replayed against the next run.
///
/// Net-SNMP would also store users from the configuration, so that a removed user would stay.
/// Failure: a file that cannot be used or written is logged. The engine then has a new id.
class EngineIdentity
{
public:
    /// With an empty path nothing is kept.
    explicit EngineIdentity(const QString& path);

    /// Reads the last run's values, and counts this run in the file. Net-SNMP takes the values when it reads
    /// its configuration; store() must follow.
    void load();

    /// Stores this run's values. Call it once Net-SNMP has read its configuration, before it serves.
    void store();

private:
    static int handOverId(int, int, void*, void* self);
    static int handOverBoots(int, int, void*, void* self);
    bool readLines(const QStringList& lines);
    Error write(const QByteArray& id, quint32 boots) const;

    const StateFile m_file;
    QByteArray m_id; ///< in hexadecimal digits; empty for none
    quint32 m_boots = 0;
};

} // namespace agent

#endif
