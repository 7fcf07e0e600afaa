// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/SnmpReader.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "agent/netsnmp/NetSnmp.h"
#include "agent/netsnmp/NetSnmpEventLoop.h"
#include "agent/netsnmp/OwnFiles.h"

namespace agent {

namespace {

constexpr char readerName[] = "vigil-agent-show";
constexpr long answerUs = 1'000'000;
constexpr int retries = 2;
constexpr long objectsPerAnswer = 50;

struct FreeMessage
{
    void operator()(netsnmp_pdu* message) const { snmp_free_pdu(message); }
};

using Message = std::unique_ptr<netsnmp_pdu, FreeMessage>;

ObjectId idOf(const netsnmp_variable_list& varbind)
{
    ObjectId id(varbind.name_length);
    std::transform(varbind.name, varbind.name + varbind.name_length, id.begin(),
                   [](oid arc) { return static_cast<unsigned int>(arc); });
    return id;
}

ServedValue valueOf(const netsnmp_variable_list& varbind)
{
    switch (varbind.type) {
    case ASN_OCTET_STR:
        return {0, std::string(reinterpret_cast<const char*>(varbind.val.string), varbind.val_len)};
    case ASN_INTEGER:
        return {*varbind.val.integer, {}};
    case ASN_GAUGE:
    case ASN_COUNTER:
    case ASN_TIMETICKS:
        return {static_cast<std::uint32_t>(*varbind.val.integer), {}};
    default:
        return {};
    }
}

netsnmp_pdu* bulkRequest(const ObjectId& after)
{
    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GETBULK);
    request->non_repeaters = 0;
    request->max_repetitions = objectsPerAnswer;
    const std::vector<oid> id(after.begin(), after.end());
    snmp_add_null_var(request, id.data(), id.size());
    return request;
}

} // namespace

SnmpReader::SnmpReader()
{
    NetSnmpEventLoop::bridgeLog();
    keepToOwnFiles(QFile::encodeName(m_directory.path()));
    init_snmp(readerName);
}

SnmpReader::~SnmpReader()
{
    if (m_session)
        snmp_sess_close(m_session);
    snmp_shutdown(readerName);
}

Error SnmpReader::open(const QString& address, const QString& community)
{
    m_address = address;
    QByteArray peer = address.toLocal8Bit();
    QByteArray name = community.toUtf8();
    netsnmp_session settings = {};
    snmp_sess_init(&settings);
    settings.version = SNMP_VERSION_2c;
    settings.peername = peer.data();
    settings.community = reinterpret_cast<unsigned char*>(name.data());
    settings.community_len = static_cast<size_t>(name.size());
    settings.timeout = answerUs;
    settings.retries = retries;
    m_session = snmp_sess_open(&settings);
    return m_session ? Error()
                     : Error(QStringLiteral("no agent can be asked at %1. Name the address it serves with "
                                            "--standalone")
                                 .arg(address));
}

Error SnmpReader::walk(const ObjectId& tree, ServedObjects& objects)
{
    ObjectId next = tree;
    while (!next.empty()) {
        if (Error error = readOn(tree, next, objects))
            return error;
    }
    return {};
}

Error SnmpReader::readOn(const ObjectId& tree, ObjectId& next, ServedObjects& objects)
{
    netsnmp_pdu* received = nullptr;
    const int result = snmp_sess_synch_response(m_session, bulkRequest(next), &received);
    const Message answer(received);
    if (result != STAT_SUCCESS || !answer)
        return Error(QStringLiteral(
                         "no agent answers at %1. Check that it runs, that --standalone is its address, and "
                         "that its configuration admits the community")
                         .arg(m_address));
    if (answer->errstat != SNMP_ERR_NOERROR)
        return Error(QStringLiteral("the agent refuses to answer: %1")
                         .arg(QLatin1String(snmp_errstring(static_cast<int>(answer->errstat)))));
    const ObjectId asked = std::exchange(next, {});
    ObjectId last = asked;
    for (const netsnmp_variable_list* varbind = answer->variables; varbind;
         varbind = varbind->next_variable) {
        const ObjectId id = idOf(*varbind);
        if (varbind->type == SNMP_ENDOFMIBVIEW || !isInTree(tree, id) || id <= last)
            return {};
        objects[id] = valueOf(*varbind);
        last = id;
    }
    if (last != asked)
        next = last;
    return {};
}

} // namespace agent
