// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/AgentScalars.h"

#include <vector>

#include "agent/serving/VarbindValue.h"
#include "base/BuildInfo.h"

namespace agent {

namespace {

// The arcs in the MIB.
constexpr unsigned int scalarsArc = 1;
enum Scalar : oid {
    Version = 1,
    UpTime,
    Cells,
    SetsForwarded,
    SetsRefused,
    SetsTimedOut,
    NotificationsSent,
    TakeoversRefused,
    ConnectionsRefused,
    ProtocolErrors,
    NotificationsDropped,
    Rejoins,
    Memory,
    MemoryLimit,
    SetsFailedAtOnce
};

constexpr qint64 msPerTick = 10;
constexpr size_t bytesPerKilobyte = 1024;

} // namespace

AgentScalars::AgentScalars(const Clock& clock, const CellStore& store, const ApplicationServer& applications,
                           const SetCoordinator& sets, const Notifications& notifications,
                           const SnmpEngine& engine)
    : m_clock(clock),
      m_startMs(clock.elapsedMs()),
      m_store(store),
      m_applications(applications),
      m_sets(sets),
      m_notifications(notifications),
      m_engine(engine)
{}

bool AgentScalars::registerObjects()
{
    const ObjectId root = below(agentMibRoot(), {scalarsArc});
    const std::vector<oid> rootOid(root.begin(), root.end());
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        "vigilAgent", &AgentScalars::handle, rootOid.data(), rootOid.size(), HANDLER_CAN_RONLY);
    if (!registration)
        return false;
    registration->handler->myvoid = this;
    return netsnmp_register_scalar_group(registration, Version, SetsFailedAtOnce) == MIB_REGISTERED_OK;
}

int AgentScalars::handle(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                         netsnmp_agent_request_info*, netsnmp_request_info* requests)
{
    const auto* self = static_cast<const AgentScalars*>(handler->myvoid);
    netsnmp_variable_list* varbind = requests->requestvb; // Net-SNMP's helpers pass one request at a time
    self->put(varbind, varbind->name[varbind->name_length - 2]);
    return SNMP_ERR_NOERROR;
}

void AgentScalars::put(netsnmp_variable_list* varbind, oid object) const
{
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
    case TakeoversRefused:
        return putNumber(varbind, ASN_COUNTER, m_applications.counts().takeoversRefused);
    case ConnectionsRefused:
        return putNumber(varbind, ASN_COUNTER, m_applications.counts().connectionsRefused);
    case ProtocolErrors:
        return putNumber(varbind, ASN_COUNTER, m_applications.counts().protocolErrors);
    case NotificationsDropped:
        return putNumber(varbind, ASN_COUNTER, m_notifications.dropped());
    case Rejoins:
        return putNumber(varbind, ASN_COUNTER, m_engine.rejoins());
    case Memory:
        return putGauge(varbind, (m_applications.memory() + m_notifications.memory()) / bytesPerKilobyte);
    case MemoryLimit:
        return putGauge(varbind, m_applications.memoryLimit() / bytesPerKilobyte);
    case SetsFailedAtOnce:
        return putNumber(varbind, ASN_COUNTER, m_sets.counts().failedAtOnce);
    default:
        break;
    }
}

} // namespace agent
