// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_SNMPREADER_H
#define VIGIL_AGENT_NETSNMP_SNMPREADER_H

#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <map>
#include <string>

#include "agent/core/Error.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The value of an object as a manager reads it: a number, or octets.
struct ServedValue
{
    std::int64_t number = 0;
    std::string octets;
};

using ServedObjects = std::map<ObjectId, ServedValue>;

/// Reads objects of a running agent as a manager does, over SNMPv2c.
///
/// Each call waits for the answers, so a process that serves must not use it.
/// Ownership: Net-SNMP's state is global, so one reader or engine per process.
class SnmpReader
{
public:
    SnmpReader();
    ~SnmpReader();
    SnmpReader(const SnmpReader&) = delete;
    SnmpReader& operator=(const SnmpReader&) = delete;

    /// Prepares for an agent at address, in Net-SNMP's notation. Sends nothing yet.
    Error open(const QString& address, const QString& community);

    /// Adds all objects at and below tree. Requires an open reader.
    Error walk(const ObjectId& tree, ServedObjects& objects);

private:
    /// One answer's objects. next is the last of them, or empty at the end of the tree.
    Error readOn(const ObjectId& tree, ObjectId& next, ServedObjects& objects);

    QTemporaryDir m_directory;
    QString m_address;
    void* m_session = nullptr;
};

} // namespace agent

#endif
