// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ReplayGuard.h"

#include <QCryptographicHash>

#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr int afterAccessControl = 10;
constexpr qint64 rememberMs = 300'000;
constexpr size_t mostRemembered = 20'000;
constexpr qint64 replayWarningPauseMs = 60'000;

void add(QCryptographicHash& hash, const void* bytes, size_t size)
{
    const auto length = static_cast<quint64>(size); // keeps neighbours apart
    hash.addData(reinterpret_cast<const char*>(&length), sizeof length);
    hash.addData(static_cast<const char*>(bytes), static_cast<int>(size));
}

/// Of everything the sender has authenticated, except the time.
QByteArray fingerprintOf(const netsnmp_pdu& pdu)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    add(hash, pdu.securityName, pdu.securityNameLen);
    add(hash, pdu.contextName, pdu.contextNameLen);
    add(hash, &pdu.msgid, sizeof pdu.msgid);
    add(hash, &pdu.reqid, sizeof pdu.reqid);
    for (const netsnmp_variable_list* varbind = pdu.variables; varbind; varbind = varbind->next_variable) {
        add(hash, varbind->name, varbind->name_length * sizeof(oid));
        add(hash, &varbind->type, sizeof varbind->type);
        add(hash, varbind->val.string, varbind->val_len);
    }
    return hash.result();
}

bool isAuthenticatedSet(const netsnmp_pdu& pdu)
{
    return pdu.command == SNMP_MSG_SET && pdu.version == SNMP_VERSION_3 &&
           pdu.securityLevel >= SNMP_SEC_LEVEL_AUTHNOPRIV;
}

} // namespace

void ReplayGuard::start()
{
    netsnmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK_INITIAL, &check, this,
                              afterAccessControl);
}

void ReplayGuard::stop()
{
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK_INITIAL, &check, this, 1);
}

/// Net-SNMP asks once for each message, after it has verified the sender.
int ReplayGuard::check(int, int, void* view, void* self)
{
    auto& parameters = *static_cast<view_parameters*>(view);
    auto& guard = *static_cast<ReplayGuard*>(self);
    if (parameters.errorcode != VACM_SUCCESS || !isAuthenticatedSet(*parameters.pdu))
        return SNMPERR_SUCCESS;
    if (guard.isCopy(*parameters.pdu)) {
        guard.warn(*parameters.pdu);
        parameters.errorcode = VACM_NOSUCHCONTEXT; // the one error without a reply
    }
    return SNMPERR_SUCCESS;
}

bool ReplayGuard::isCopy(const netsnmp_pdu& pdu)
{
    forgetOld();
    const auto [position, isNew] = m_seen.insert(fingerprintOf(pdu));
    if (isNew)
        m_order.emplace_back(m_clock.elapsedMs(), position);
    return !isNew;
}

void ReplayGuard::forgetOld()
{
    while (!m_order.empty() &&
           (m_order.size() >= mostRemembered || m_order.front().first + rememberMs < m_clock.elapsedMs())) {
        m_seen.erase(m_order.front().second);
        m_order.pop_front();
    }
}

void ReplayGuard::warn(const netsnmp_pdu& pdu)
{
    if (m_clock.elapsedMs() < m_nextWarningMs)
        return;
    m_nextWarningMs = m_clock.elapsedMs() + replayWarningPauseMs;
    log::warning(
        QStringLiteral("a copy of a SET by user %1 is dropped: someone may have recorded it. Further "
                       "copies are not logged for a minute")
            .arg(QString::fromUtf8(pdu.securityName, static_cast<int>(pdu.securityNameLen))));
}

} // namespace agent
