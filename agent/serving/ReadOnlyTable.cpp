// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/ReadOnlyTable.h"

#include <vector>

#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

constexpr unsigned int entryArc = 1;

/// The index in a cell of the column; empty if it is not one.
ObjectId rowIn(const ObjectId& column, const ObjectId& cell)
{
    if (!isInTree(column, cell))
        return {};
    return ObjectId(cell.begin() + static_cast<std::ptrdiff_t>(column.size()), cell.end());
}

} // namespace

ReadOnlyTable::ReadOnlyTable(const char* name, const ObjectId& table, unsigned int firstColumn,
                             unsigned int lastColumn)
    : m_name(name),
      m_table(table),
      m_entry(below(table, {entryArc})),
      m_firstColumn(firstColumn),
      m_lastColumn(lastColumn)
{}

bool ReadOnlyTable::registerObjects()
{
    const std::vector<oid> root(m_table.begin(), m_table.end());
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        m_name, &ReadOnlyTable::handle, root.data(), root.size(), HANDLER_CAN_RONLY);
    if (!registration)
        return false;
    registration->handler->myvoid = this;
    return netsnmp_register_handler(registration) == SNMPERR_SUCCESS;
}

int ReadOnlyTable::handle(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                          netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    const auto* self = static_cast<const ReadOnlyTable*>(handler->myvoid);
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        if (info->mode == MODE_GETNEXT)
            self->getNext(request); // at the end Net-SNMP goes on after the table
        else if (!self->get(request->requestvb, objectIdOf(*request->requestvb)))
            netsnmp_request_set_error(request, SNMP_NOSUCHINSTANCE);
    }
    return SNMP_ERR_NOERROR;
}

/// False if there is no such cell.
bool ReadOnlyTable::get(netsnmp_variable_list* varbind, const ObjectId& cell) const
{
    if (!isInColumns(cell))
        return false;
    const auto column = cell.begin() + static_cast<std::ptrdiff_t>(m_entry.size());
    return put(varbind, *column, ObjectId(column + 1, cell.end()));
}

bool ReadOnlyTable::isInColumns(const ObjectId& cell) const
{
    return cell.size() > m_entry.size() + 1 && isInTree(m_entry, cell) &&
           cell[m_entry.size()] >= m_firstColumn && cell[m_entry.size()] <= m_lastColumn;
}

void ReadOnlyTable::getNext(netsnmp_request_info* request) const
{
    const ObjectId asked = objectIdOf(*request->requestvb);
    if (request->inclusive && get(request->requestvb, asked))
        return;
    for (unsigned int column = m_firstColumn; column <= m_lastColumn; ++column) {
        const ObjectId start = below(m_entry, {column});
        if (start < asked && !isInTree(start, asked))
            continue; // an earlier column
        const std::optional<ObjectId> row = nextRow(rowIn(start, asked));
        if (row)
            return putCell(request->requestvb, column, *row);
    }
}

void ReadOnlyTable::putCell(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const
{
    ObjectId cell = below(m_entry, {column});
    cell.insert(cell.end(), row.begin(), row.end());
    const std::vector<oid> name(cell.begin(), cell.end());
    snmp_set_var_objid(varbind, name.data(), name.size());
    put(varbind, column, row);
}

} // namespace agent
