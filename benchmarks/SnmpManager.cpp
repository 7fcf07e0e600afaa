// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <net-snmp/net-snmp-config.h>
// Net-SNMP's headers need the one above first.
#include <net-snmp/net-snmp-includes.h>

#include "benchmarks/SnmpManager.h"

#include <cstdlib>
#include <vector>

namespace {

std::vector<oid> arcsOf(const vigil::Oid& cell)
{
    const std::vector<unsigned int> arcs = cell.toStdVector();
    return {arcs.begin(), arcs.end()};
}

} // namespace

SnmpManager::SnmpManager(const std::string& address, const std::string& community)
{
    setenv("MIBS", "", 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
    init_snmp("vigil-benchmark");
    std::string peer = address;
    std::string name = community;
    snmp_session session{};
    snmp_sess_init(&session);
    session.version = SNMP_VERSION_2c;
    session.peername = peer.data();
    session.community = reinterpret_cast<u_char*>(name.data());
    session.community_len = name.size();
    m_session = snmp_open(&session);
    if (!m_session)
        std::abort();
}

SnmpManager::~SnmpManager()
{
    snmp_close(m_session);
}

std::optional<std::string> SnmpManager::get(const vigil::Oid& cell)
{
    const std::vector<oid> arcs = arcsOf(cell);
    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GET);
    snmp_add_null_var(request, arcs.data(), arcs.size());
    netsnmp_pdu* response = nullptr;
    std::optional<std::string> text;
    if (snmp_synch_response(m_session, request, &response) == STAT_SUCCESS &&
        response->variables->type == ASN_OCTET_STR)
        text.emplace(reinterpret_cast<const char*>(response->variables->val.string),
                     response->variables->val_len);
    snmp_free_pdu(response);
    return text;
}

bool SnmpManager::set(const vigil::Oid& cell, const std::string& text)
{
    const std::vector<oid> arcs = arcsOf(cell);
    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_SET);
    snmp_pdu_add_variable(request, arcs.data(), arcs.size(), ASN_OCTET_STR, text.data(), text.size());
    netsnmp_pdu* response = nullptr;
    const bool isAccepted = snmp_synch_response(m_session, request, &response) == STAT_SUCCESS &&
                            response->errstat == SNMP_ERR_NOERROR;
    snmp_free_pdu(response);
    return isAccepted;
}
