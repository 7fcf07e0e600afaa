// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_CONFIGURATIONFILE_H
#define VIGIL_AGENT_NETSNMP_CONFIGURATIONFILE_H

#include <QByteArray>
#include <QString>

#include "agent/core/Error.h"

/// The operator's file with access control and secrets. One source file for each system.
namespace agent::configurationFile {

/// Says who else may read or change the file, if the system is one that grants this unasked. POSIX leaves the
/// rights to the operator; on Windows a new file is open to all users of the machine.
Error checkRights(const QString& path);

/// The name for C's fopen(), which Net-SNMP uses. Empty if the file has none.
QByteArray nameForC(const QString& path);

} // namespace agent::configurationFile

#endif
