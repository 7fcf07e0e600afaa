// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/SetLine.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include "agent/core/Log.h"
#include "agent/core/ShortText.h"
#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

constexpr char lineDataName[] = "vigil-set-line";
constexpr size_t longestValue = 200;

QString shownValue(const CellValue& value)
{
    if (const int* number = std::get_if<int>(&value))
        return QString::number(*number);
    return QLatin1Char('"') + QString::fromStdString(shortened(std::get<std::string>(value), longestValue)) +
           QLatin1Char('"');
}

QString changeText(const netsnmp_variable_list& varbind, const CellStore& store)
{
    CellValue value;
    const bool isReadable = readValue(varbind, value) == SNMP_ERR_NOERROR;
    const Cell* cell = store.find(objectIdOf(varbind));
    return QStringLiteral("%1 from %2 to %3")
        .arg(toText(objectIdOf(varbind)), cell ? shownValue(cell->served()) : QStringLiteral("nothing"),
             isReadable ? shownValue(value) : QStringLiteral("another type"));
}

/// For example "UDP: [192.0.2.1]:40112->[192.0.2.2]:161".
QString addressOf(const netsnmp_agent_session& request)
{
    netsnmp_transport* transport = snmp_sess_transport(snmp_sess_pointer(request.session));
    if (!transport || !transport->f_fmtaddr)
        return QStringLiteral("unknown");
    const std::unique_ptr<char, decltype(&std::free)> text(
        transport->f_fmtaddr(transport, request.pdu->transport_data, request.pdu->transport_data_length),
        &std::free);
    return QString::fromLatin1(text.get());
}

QString managerOf(const netsnmp_agent_session& request)
{
    const netsnmp_pdu& pdu = *request.pdu;
    if (netsnmp_ds_get_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE) != 0)
        return QStringLiteral("a manager behind snmpd");
    if (pdu.version == SNMP_VERSION_3)
        return QStringLiteral("user %1 at %2")
            .arg(QString::fromUtf8(pdu.securityName, static_cast<int>(pdu.securityNameLen)),
                 addressOf(request));
    return QStringLiteral("community %1 at %2")
        .arg(QString::fromUtf8(reinterpret_cast<const char*>(pdu.community),
                               static_cast<int>(pdu.community_len)),
             addressOf(request));
}

/// The name of an error status, without Net-SNMP's explanation.
QString statusName(int status)
{
    const QString text = QString::fromLatin1(snmp_errstring(status));
    return text.section(QLatin1Char(' '), 0, 0).remove(QLatin1Char('(')).remove(QLatin1Char(')'));
}

} // namespace

SetLine::SetLine(QString who, QStringList changes) : m_who(std::move(who)), m_changes(std::move(changes)) {}

SetLine::~SetLine()
{
    const QString answer = m_answer < 0 ? QStringLiteral("an error of another part") : statusName(m_answer);
    log::info(
        QStringLiteral("SET by %1: %2; answer: %3").arg(m_who, m_changes.join(QStringLiteral(", ")), answer));
}

void SetLine::begin(const netsnmp_agent_request_info& info, netsnmp_request_info* requests,
                    const CellStore& store)
{
    QStringList changes;
    for (const netsnmp_request_info* request = requests; request; request = request->next)
        changes.append(changeText(*request->requestvb, store));
    netsnmp_request_add_list_data(
        requests, netsnmp_create_data_list(lineDataName, new SetLine(managerOf(*info.asp), changes),
                                           &SetLine::release));
}

void SetLine::setAnswer(netsnmp_request_info* requests, int errorStatus)
{
    auto* line = static_cast<SetLine*>(netsnmp_request_get_list_data(requests, lineDataName));
    if (line && line->m_answer <= SNMP_ERR_NOERROR)
        line->m_answer = errorStatus;
}

void SetLine::release(void* line)
{
    delete static_cast<SetLine*>(line);
}

} // namespace agent
