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
    session.timeout = 60'000'000; // microseconds: the machine may be busy
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

int SnmpManager::walk(const vigil::Oid& root)
{
    constexpr int cellsOfAnswer = 50;
    const std::vector<oid> tree = arcsOf(root);
    std::vector<oid> last = tree;
    int found = 0;
    while (true) {
        netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GETBULK);
        request->non_repeaters = 0;
        request->max_repetitions = cellsOfAnswer;
        snmp_add_null_var(request, last.data(), last.size());
        netsnmp_pdu* response = nullptr;
        const int foundBefore = found;
        bool isInside = snmp_synch_response(m_session, request, &response) == STAT_SUCCESS &&
                        response->errstat == SNMP_ERR_NOERROR;
        for (auto* each = isInside ? response->variables : nullptr; each && isInside;
             each = each->next_variable) {
            last.assign(each->name, each->name + each->name_length);
            isInside = each->type == ASN_OCTET_STR &&
                       netsnmp_oid_is_subtree(tree.data(), tree.size(), last.data(), last.size()) == 0;
            found += isInside ? 1 : 0;
        }
        snmp_free_pdu(response);
        if (!isInside || found == foundBefore)
            return found;
    }
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
