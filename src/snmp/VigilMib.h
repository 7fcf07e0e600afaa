// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_VIGILMIB_H
#define VIGIL_SNMP_VIGILMIB_H

#include <string>

#include "base/wire/Protocol.h"

/// The identifier of a conceptual row, by the number of its table in VIGIL-MIB.
inline std::string entryOfTable(int table)
{
    return std::string(".") + base::enterpriseOid + '.' + base::vigilMibOid + '.' + std::to_string(table) +
           ".1";
}

#endif
