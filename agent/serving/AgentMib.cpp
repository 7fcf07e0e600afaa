// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/AgentMib.h"

#include <QDate>
#include <QTime>

#include <algorithm>
#include <array>
#include <limits>

#include "base/BuildInfo.h"

namespace agent {

namespace {

enum Scalar : oid { Version = 1, UpTime, Cells, SetsForwarded, SetsRefused, SetsTimedOut, NotificationsSent };

enum Column : unsigned int {
    Address = 2,
    Port,
    State,
    Since,
    ConnectionCells,
    Frames,
    RecordsRefused,
    LastFrame
};

std::vector<oid> below(unsigned int arc)
{
    std::vector<oid> id(agentMibRoot().begin(), agentMibRoot().end());
    id.push_back(arc);
    return id;
}

// Net-SNMP keeps all integers in a long, of which it sends the 32 bits that the type has.
void putNumber(netsnmp_variable_list* varbind, u_char type, quint64 value)
{
    snmp_set_var_typed_integer(varbind, type, static_cast<long>(value & 0xffff'ffffU));
}

/// Stops at its end, as gauges do; counters start again.
void putGauge(netsnmp_variable_list* varbind, quint64 value)
{
    putNumber(varbind, ASN_GAUGE, std::min<quint64>(value, std::numeric_limits<quint32>::max()));
}

void putText(netsnmp_variable_list* varbind, const QByteArray& text)
{
    snmp_set_var_typed_value(varbind, ASN_OCTET_STR, text.constData(), static_cast<size_t>(text.size()));
}

/// DateAndTime in UTC; eight zeroes for no time.
void putTime(netsnmp_variable_list* varbind, const QDateTime& time)
{
    if (!time.isValid())
        return putText(varbind, QByteArray(8, '\0'));
    const QDate date = time.date();
    const QTime clock = time.time();
    const std::array<int, 11> octets{date.year() / 256,
                                     date.year() % 256,
                                     date.month(),
                                     date.day(),
                                     clock.hour(),
                                     clock.minute(),
                                     clock.second(),
                                     clock.msec() / 100,
                                     '+',
                                     0,
                                     0};
    QByteArray text;
    for (const int octet : octets)
        text += static_cast<char>(octet);
    putText(varbind, text);
}

void putColumn(netsnmp_variable_list* varbind, unsigned int column, const ApplicationInfo& connection)
{
    constexpr quint64 connected = 1;
    constexpr quint64 lost = 2;
    switch (column) {
    case Address:
        return putText(varbind, connection.address.toString().toLatin1());
    case Port:
        return putNumber(varbind, ASN_UNSIGNED, connection.port);
    case State:
        return putNumber(varbind, ASN_INTEGER,
                         connection.state == ApplicationInfo::State::Connected ? connected : lost);
    case Since:
        return putTime(varbind, connection.since);
    case ConnectionCells:
        return putGauge(varbind, connection.cells);
    case Frames:
        return putNumber(varbind, ASN_COUNTER, connection.frames);
    case RecordsRefused:
        return putNumber(varbind, ASN_COUNTER, connection.recordsRefused);
    case LastFrame:
        return putTime(varbind, connection.lastFrame);
    default:
        break;
    }
}

} // namespace

AgentMib::AgentMib(const Clock& clock, const CellStore& store, const ApplicationServer& applications,
                   const SetCoordinator& sets, const Notifications& notifications)
    : m_clock(clock),
      m_startMs(clock.elapsedMs()),
      m_store(store),
      m_applications(applications),
      m_sets(sets),
      m_notifications(notifications)
{}

bool AgentMib::registerObjects()
{
    return registerScalars() && registerConnections();
}

// --- Scalars

bool AgentMib::registerScalars()
{
    const std::vector<oid> root = below(1);
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        "vigilAgent", &AgentMib::handleScalars, root.data(), root.size(), HANDLER_CAN_RONLY);
    if (!registration)
        return false;
    registration->handler->myvoid = this;
    return netsnmp_register_scalar_group(registration, Version, NotificationsSent) == MIB_REGISTERED_OK;
}

int AgentMib::handleScalars(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                            netsnmp_agent_request_info*, netsnmp_request_info* requests)
{
    const auto* self = static_cast<const AgentMib*>(handler->myvoid);
    netsnmp_variable_list* varbind = requests->requestvb; // of one request: the helpers hand on no more
    self->putScalar(varbind, varbind->name[varbind->name_length - 2]);
    return SNMP_ERR_NOERROR;
}

void AgentMib::putScalar(netsnmp_variable_list* varbind, oid object) const
{
    constexpr qint64 msPerTick = 10;
    switch (object) {
    case Version:
        return putText(varbind, base::buildInfo::version());
    case UpTime:
        return putNumber(varbind, ASN_TIMETICKS,
                         static_cast<quint64>((m_clock.elapsedMs() - m_startMs) / msPerTick));
    case Cells:
        return putGauge(varbind, m_store.size());
    case SetsForwarded:
        return putNumber(varbind, ASN_COUNTER, m_sets.counts().forwarded);
    case SetsRefused:
        return putNumber(varbind, ASN_COUNTER, m_sets.counts().refused);
    case SetsTimedOut:
        return putNumber(varbind, ASN_COUNTER, m_sets.counts().timedOut);
    case NotificationsSent:
        return putNumber(varbind, ASN_COUNTER, m_notifications.sent());
    default:
        break;
    }
}

// --- Connections

bool AgentMib::registerConnections()
{
    const std::vector<oid> root = below(2);
    netsnmp_handler_registration* registration =
        netsnmp_create_handler_registration("vigilAgentConnectionTable", &AgentMib::handleConnections,
                                            root.data(), root.size(), HANDLER_CAN_RONLY);
    auto* columns = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    auto* rows = SNMP_MALLOC_TYPEDEF(netsnmp_iterator_info);
    if (!registration || !columns || !rows)
        return false;
    netsnmp_table_helper_add_indexes(columns, ASN_UNSIGNED, 0);
    columns->min_column = Address;
    columns->max_column = LastFrame;
    rows->get_first_data_point = &AgentMib::firstRow;
    rows->get_next_data_point = &AgentMib::nextRow;
    rows->table_reginfo = columns;
    rows->myvoid = this;
    rows->flags = NETSNMP_ITERATOR_FLAG_SORTED;
    netsnmp_mib_handler* iterator = netsnmp_get_table_iterator_handler(rows);
    netsnmp_handler_owns_iterator_info(iterator);
    netsnmp_inject_handler(registration, iterator);
    netsnmp_inject_handler(registration, netsnmp_get_table_handler(columns));
    // One request at a time: the iterator loses some of several that reach the end of their columns together.
    return netsnmp_register_serialize(registration) == MIB_REGISTERED_OK;
}

int AgentMib::handleConnections(netsnmp_mib_handler*, netsnmp_handler_registration*,
                                netsnmp_agent_request_info*, netsnmp_request_info* requests)
{
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        const auto* row = static_cast<const ApplicationInfo*>(netsnmp_extract_iterator_context(request));
        const netsnmp_table_request_info* cell = netsnmp_extract_table_info(request);
        if (row && cell && !request->processed)
            putColumn(request->requestvb, cell->colnum, *row);
    }
    return SNMP_ERR_NOERROR;
}

netsnmp_variable_list* AgentMib::firstRow(void** loop, void** data, netsnmp_variable_list* index,
                                          netsnmp_iterator_info* info)
{
    auto* self = static_cast<AgentMib*>(info->myvoid);
    self->m_rows = self->m_applications.applications();
    return self->offerRow(0, loop, data, index);
}

netsnmp_variable_list* AgentMib::nextRow(void** loop, void** data, netsnmp_variable_list* index,
                                         netsnmp_iterator_info* info)
{
    auto* self = static_cast<AgentMib*>(info->myvoid);
    const auto* row = static_cast<const ApplicationInfo*>(*loop);
    return self->offerRow(static_cast<size_t>(row - self->m_rows.data()) + 1, loop, data, index);
}

netsnmp_variable_list* AgentMib::offerRow(size_t row, void** loop, void** data, netsnmp_variable_list* index)
{
    if (row >= m_rows.size())
        return nullptr;
    ApplicationInfo& connection = m_rows[row];
    *loop = &connection;
    *data = &connection;
    putNumber(index, ASN_UNSIGNED, connection.number);
    return index;
}

} // namespace agent
