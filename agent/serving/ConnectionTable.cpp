// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/ConnectionTable.h"

#include <memory>

#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

// The arcs in the MIB, and its names without "vigilAgent".
constexpr unsigned int tableArc = 2;
enum Column : unsigned int {
    ConnectionAddress = 2,
    ConnectionPort,
    ConnectionState,
    ConnectionSince,
    ConnectionCells,
    ConnectionFrames,
    ConnectionRecordsRefused,
    ConnectionLastFrame,
    ConnectionUser,
    ConnectionProcess,
    ConnectionProgram,
    ConnectionName
};

void putColumn(netsnmp_variable_list* varbind, unsigned int column, const ApplicationInfo& application)
{
    constexpr quint64 connected = 1;
    constexpr quint64 lost = 2;
    switch (column) {
    case ConnectionAddress:
        return putText(varbind, application.address.toString().toLatin1());
    case ConnectionPort:
        return putNumber(varbind, ASN_UNSIGNED, application.port);
    case ConnectionState:
        return putNumber(varbind, ASN_INTEGER,
                         application.state == ApplicationInfo::State::Connected ? connected : lost);
    case ConnectionSince:
        return putTime(varbind, application.since);
    case ConnectionCells:
        return putGauge(varbind, application.cells);
    case ConnectionFrames:
        return putNumber(varbind, ASN_COUNTER, application.frames);
    case ConnectionRecordsRefused:
        return putNumber(varbind, ASN_COUNTER, application.recordsRefused);
    case ConnectionLastFrame:
        return putTime(varbind, application.lastFrame);
    case ConnectionUser:
        return putText(varbind, QByteArray::fromStdString(application.identity.user.value_or("unknown")));
    case ConnectionProcess:
        return putNumber(varbind, ASN_UNSIGNED, application.identity.process);
    case ConnectionProgram:
        return putText(varbind, application.identity.program.toLatin1());
    case ConnectionName:
        return putText(varbind, nameOf(application).toUtf8());
    default:
        break;
    }
}

struct FreeAllocated
{
    void operator()(void* memory) const { SNMP_FREE(memory); }
};

/// Memory of Net-SNMP until a handler takes it over.
template <typename T>
using Allocated = std::unique_ptr<T, FreeAllocated>;

} // namespace

bool ConnectionTable::registerObjects()
{
    const ObjectId root = below(agentMibRoot(), {tableArc});
    const std::vector<oid> rootOid(root.begin(), root.end());
    netsnmp_handler_registration* registration =
        netsnmp_create_handler_registration("vigilAgentConnectionTable", &ConnectionTable::handle,
                                            rootOid.data(), rootOid.size(), HANDLER_CAN_RONLY);
    Allocated<netsnmp_table_registration_info> columns(SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info));
    Allocated<netsnmp_iterator_info> rows(SNMP_MALLOC_TYPEDEF(netsnmp_iterator_info));
    if (!registration || !columns || !rows)
        return false;
    netsnmp_table_helper_add_indexes(columns.get(), ASN_UNSIGNED, 0);
    columns->min_column = ConnectionAddress;
    columns->max_column = ConnectionName;
    rows->get_first_data_point = &ConnectionTable::firstRow;
    rows->get_next_data_point = &ConnectionTable::nextRow;
    rows->table_reginfo = columns.get();
    rows->myvoid = this;
    rows->flags = NETSNMP_ITERATOR_FLAG_SORTED;
    netsnmp_mib_handler* iterator = netsnmp_get_table_iterator_handler(rows.release());
    netsnmp_handler_owns_iterator_info(iterator);
    netsnmp_inject_handler(registration, iterator);
    netsnmp_inject_handler(registration, netsnmp_get_table_handler(columns.release()));
    // One request at a time: if several reach the end of their columns together, the iterator loses some.
    return netsnmp_register_serialize(registration) == MIB_REGISTERED_OK;
}

int ConnectionTable::handle(netsnmp_mib_handler*, netsnmp_handler_registration*, netsnmp_agent_request_info*,
                            netsnmp_request_info* requests)
{
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        const auto* row = static_cast<const ApplicationInfo*>(netsnmp_extract_iterator_context(request));
        const netsnmp_table_request_info* cell = netsnmp_extract_table_info(request);
        if (row && cell && !request->processed)
            putColumn(request->requestvb, cell->colnum, *row);
    }
    return SNMP_ERR_NOERROR;
}

netsnmp_variable_list* ConnectionTable::firstRow(void** loop, void** data, netsnmp_variable_list* index,
                                                 netsnmp_iterator_info* info)
{
    auto* self = static_cast<ConnectionTable*>(info->myvoid);
    self->m_rows = self->m_applications.applications();
    return self->offerRow(0, loop, data, index);
}

netsnmp_variable_list* ConnectionTable::nextRow(void** loop, void** data, netsnmp_variable_list* index,
                                                netsnmp_iterator_info* info)
{
    auto* self = static_cast<ConnectionTable*>(info->myvoid);
    const auto* row = static_cast<const ApplicationInfo*>(*loop);
    return self->offerRow(static_cast<size_t>(row - self->m_rows.data()) + 1, loop, data, index);
}

netsnmp_variable_list* ConnectionTable::offerRow(size_t row, void** loop, void** data,
                                                 netsnmp_variable_list* index)
{
    if (row >= m_rows.size())
        return nullptr;
    ApplicationInfo& application = m_rows[row];
    *loop = &application;
    *data = &application;
    putNumber(index, ASN_UNSIGNED, application.number);
    return index;
}

} // namespace agent
