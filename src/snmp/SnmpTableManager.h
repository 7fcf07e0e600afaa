// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPTABLEMANAGER_H
#define VIGIL_SNMP_SNMPTABLEMANAGER_H

#include "snmp/SnmpHealthCheckTable.h"
#include "snmp/SnmpMgmFuncTable.h"

/// The two tables with a row for each health check, shared by all connectors.
///
/// Ownership: the facade owns it. Connectors hold weak references and skip these tables after the facade's
/// cleanup.
class SnmpTableManager
{
public:
    SnmpHealthCheckTable& healthCheckTable() { return m_healthCheckTable; }
    SnmpMgmFuncTable& mgmFuncTable() { return m_mgmFuncTable; }

private:
    SnmpHealthCheckTable m_healthCheckTable;
    SnmpMgmFuncTable m_mgmFuncTable;
};

#endif
