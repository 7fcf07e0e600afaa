// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPMGMFUNCTABLE_H
#define VIGIL_SNMP_SNMPMGMFUNCTABLE_H

#include "snmp/SnmpTable.h"

/// One row for each health check with a management handler: four triggers and a command, all writable for the
/// manager.
class SnmpMgmFuncTable : public SnmpTable<StringPair>
{
public:
    static constexpr unsigned int commandIndex = 4;

    SnmpMgmFuncTable();

    /// Writes the row of the check with these keys and creates it if absent.
    void setRow(const StringPair& key, unsigned int trigger1, int trigger2, int trigger3, int trigger4,
                const std::string& command);
};

#endif
