// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPTABLEMANAGER_H
#define VIGIL_SNMP_SNMPTABLEMANAGER_H

#include "snmp/SnmpHealthCheckTable.h"
#include "snmp/SnmpMgmFuncTable.h"

/// The two tables with a row for each health check, which all connectors share. The facade owns it;
/// connectors hold weak references, so those that outlive the facade's cleanup leave the shared tables alone.
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
