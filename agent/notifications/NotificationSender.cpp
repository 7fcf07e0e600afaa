// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/NotificationSender.h"

#include "agent/core/Log.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

const ObjectId snmpTrapOid{1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};

/// Owns a list of varbinds.
class Varbinds
{
public:
    Varbinds() = default;
    ~Varbinds() { snmp_free_varbind(m_first); }
    Varbinds(const Varbinds&) = delete;
    Varbinds& operator=(const Varbinds&) = delete;

    void append(const ObjectId& id, const ObjectId& value)
    {
        const std::vector<oid> arcs(value.begin(), value.end());
        append(id, ASN_OBJECT_ID, arcs.data(), arcs.size() * sizeof(oid));
    }

    void append(const ObjectId& id, const CellValue& value)
    {
        if (const int* number = std::get_if<int>(&value)) {
            const long wide = *number;
            append(id, ASN_INTEGER, &wide, sizeof(wide));
        } else {
            const std::string& text = std::get<std::string>(value);
            append(id, ASN_OCTET_STR, text.data(), text.size());
        }
    }

    netsnmp_variable_list* get() { return m_first; }

private:
    void append(const ObjectId& id, u_char type, const void* value, size_t size)
    {
        const std::vector<oid> name(id.begin(), id.end());
        snmp_varlist_add_variable(&m_first, name.data(), name.size(), type, value, size);
    }

    netsnmp_variable_list* m_first = nullptr;
};

} // namespace

void NotificationSender::send(const Notification& notification)
{
    Varbinds varbinds; // Net-SNMP puts sysUpTime.0 in front
    varbinds.append(snmpTrapOid, notification.type);
    for (const auto& [id, value] : notification.objects)
        varbinds.append(id, value);

    const u_int sentBefore = snmp_get_statistic(STAT_SNMPOUTTRAPS); // counts receivers
    send_v2trap(varbinds.get());
    const bool isSent = snmp_get_statistic(STAT_SNMPOUTTRAPS) != sentBefore;
    if (isSent)
        ++m_sent;
    log::detail([&] {
        return QStringLiteral("notification about %1: %2")
            .arg(toText(notification.objects.front().first),
                 isSent ? QStringLiteral("sent") : QStringLiteral("no receiver, lost"));
    });
}

} // namespace agent
