// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_READONLYTABLE_H
#define VIGIL_AGENT_SERVING_READONLYTABLE_H

#include <optional>

#include "agent/core/ObjectId.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Serves a table that managers can read. A question costs one look-up of a row, however many there are:
/// Net-SNMP's own helper goes through all rows for each question.
///
/// Rows may come and go between the questions of a walk. A walk sees each row that is there all the time.
///
/// Ownership: the table must outlive Net-SNMP's agent.
class ReadOnlyTable
{
public:
    virtual ~ReadOnlyTable() = default;
    ReadOnlyTable(const ReadOnlyTable&) = delete;
    ReadOnlyTable& operator=(const ReadOnlyTable&) = delete;

    /// Net-SNMP's agent must be initialised. False if it refuses.
    bool registerObjects();

protected:
    /// The name is for Net-SNMP and must live as long as the table.
    ReadOnlyTable(const char* name, const ObjectId& table, unsigned int firstColumn, unsigned int lastColumn);

    /// The index of the first row after this one, in the order of SNMP, or nothing. after can be an index of
    /// any length, or empty.
    virtual std::optional<ObjectId> nextRow(const ObjectId& after) const = 0;

    /// Puts the value of a cell. False if there is no such row.
    virtual bool put(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const = 0;

private:
    // Called by Net-SNMP.
    static int handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                      netsnmp_agent_request_info* info, netsnmp_request_info* requests);

    bool get(netsnmp_variable_list* varbind, const ObjectId& cell) const;
    void getNext(netsnmp_request_info* request) const;
    void putCell(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const;
    bool isInColumns(const ObjectId& cell) const;

    const char* const m_name;
    const ObjectId m_table;
    const ObjectId m_entry;
    const unsigned int m_firstColumn;
    const unsigned int m_lastColumn;
};

} // namespace agent

#endif
