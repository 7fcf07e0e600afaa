// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_SNMPMANAGER_H
#define VIGIL_BENCHMARKS_SNMPMANAGER_H

#include <optional>
#include <string>

#include <vigil/Oid.h>

struct snmp_session;

/// A manager in this process: one request at a time, by Net-SNMP's library.
class SnmpManager
{
public:
    SnmpManager(const std::string& address, const std::string& community);
    ~SnmpManager();
    SnmpManager(const SnmpManager&) = delete;
    SnmpManager& operator=(const SnmpManager&) = delete;

    /// Nothing if the cell does not exist.
    std::optional<std::string> get(const vigil::Oid& cell);

    /// A bulk walk. Returns the number of cells below root.
    int walk(const vigil::Oid& root);

    /// False if it is refused.
    bool set(const vigil::Oid& cell, const std::string& text);

private:
    snmp_session* m_session;
};

#endif
