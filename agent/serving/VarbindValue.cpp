// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/VarbindValue.h"

#include <QDate>
#include <QTime>

#include <algorithm>
#include <limits>
#include <string>

namespace agent {

ObjectId objectIdOf(const netsnmp_variable_list& varbind)
{
    ObjectId id(varbind.name_length);
    std::transform(varbind.name, varbind.name + varbind.name_length, id.begin(),
                   [](oid arc) { return static_cast<unsigned int>(arc); });
    return id;
}

int readValue(const netsnmp_variable_list& varbind, CellValue& value)
{
    if (varbind.type == ASN_OCTET_STR) {
        value = std::string(reinterpret_cast<const char*>(varbind.val.string), varbind.val_len);
        return SNMP_ERR_NOERROR;
    }
    if (varbind.type != ASN_INTEGER)
        return SNMP_ERR_WRONGTYPE;
    const long number = *varbind.val.integer;
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        return SNMP_ERR_WRONGVALUE;
    value = static_cast<int>(number);
    return SNMP_ERR_NOERROR;
}

void putValue(netsnmp_variable_list* varbind, const CellValue& value)
{
    if (const int* number = std::get_if<int>(&value)) {
        snmp_set_var_typed_integer(varbind, ASN_INTEGER, *number);
    } else {
        const std::string& text = std::get<std::string>(value);
        snmp_set_var_typed_value(varbind, ASN_OCTET_STR, text.data(), text.size());
    }
}

void putNumber(netsnmp_variable_list* varbind, u_char type, quint64 value)
{
    snmp_set_var_typed_integer(varbind, type, static_cast<long>(value & 0xffff'ffffU));
}

void putGauge(netsnmp_variable_list* varbind, quint64 value)
{
    putNumber(varbind, ASN_GAUGE, std::min<quint64>(value, std::numeric_limits<quint32>::max()));
}

void putText(netsnmp_variable_list* varbind, const QByteArray& text)
{
    snmp_set_var_typed_value(varbind, ASN_OCTET_STR, text.constData(), static_cast<size_t>(text.size()));
}

void putTime(netsnmp_variable_list* varbind, const QDateTime& time)
{
    if (!time.isValid())
        return putText(varbind, QByteArray(8, '\0'));
    const QDate date = time.date();
    const QTime clock = time.time();
    QByteArray octets;
    for (const int octet : {date.year() / 256, date.year() % 256, date.month(), date.day(), clock.hour(),
                            clock.minute(), clock.second(), clock.msec() / 100, static_cast<int>('+'), 0, 0})
        octets += static_cast<char>(octet);
    putText(varbind, octets);
}

} // namespace agent
