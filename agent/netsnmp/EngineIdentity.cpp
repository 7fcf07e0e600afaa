// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/EngineIdentity.h"

#include <algorithm>
#include <cctype>

#include "agent/core/Log.h"
#include "agent/netsnmp/NetSnmp.h"

// Part of the library; no installed header declares it.
extern "C" int snmp_config_when(char* line, int when);

namespace agent {

namespace {

const QString idWord = QStringLiteral("id 0x");
const QString bootsWord = QStringLiteral("boots ");

bool isHexadecimal(const QByteArray& text)
{
    return !text.isEmpty() && text.size() % 2 == 0 && text.size() <= 64 &&
           std::all_of(text.begin(), text.end(),
                       [](char digit) { return std::isxdigit(static_cast<unsigned char>(digit)); });
}

} // namespace

EngineIdentity::EngineIdentity(const QString& path) : m_file(path, QStringLiteral("engine")) {}

void EngineIdentity::load()
{
    QStringList lines;
    if (const Error error = m_file.read(lines))
        log::warning(error.text());
    else if (!lines.isEmpty() && !readLines(lines))
        log::warning(m_file.damaged(QStringLiteral("it has no engine id")).text());
    if (!m_id.isEmpty() && write(m_id, m_boots + 1))
        m_id.clear(); // with an old count, this run would accept SETs recorded in the last one
    if (m_id.isEmpty())
        return;
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_PREMIB_READ_CONFIG, &handOverId, this);
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, &handOverBoots, this);
}

bool EngineIdentity::readLines(const QStringList& lines)
{
    bool isNumber = false;
    if (lines.size() != 2 || !lines[0].startsWith(idWord) || !lines[1].startsWith(bootsWord))
        return false;
    const QByteArray id = lines[0].mid(idWord.size()).toLatin1();
    const quint32 boots = lines[1].mid(bootsWord.size()).toUInt(&isNumber);
    if (!isHexadecimal(id) || !isNumber)
        return false;
    m_id = id;
    m_boots = boots;
    return true;
}

/// Net-SNMP sets its engine id up before it reads most of its configuration.
int EngineIdentity::handOverId(int, int, void*, void* self)
{
    const QByteArray& id = static_cast<const EngineIdentity*>(self)->m_id;
    snmp_config_when(QByteArray("oldEngineID 0x" + id).data(), PREMIB_CONFIG);
    return SNMPERR_SUCCESS;
}

/// Net-SNMP adds one.
int EngineIdentity::handOverBoots(int, int, void*, void* self)
{
    const quint32 boots = static_cast<const EngineIdentity*>(self)->m_boots;
    snmp_config_when(QByteArray("engineBoots " + QByteArray::number(boots)).data(), NORMAL_CONFIG);
    return SNMPERR_SUCCESS;
}

void EngineIdentity::store()
{
    if (!m_id.isEmpty()) {
        // Net-SNMP would free the callback's argument, this object, at its shutdown.
        snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_PREMIB_READ_CONFIG, &handOverId,
                                 this, 1);
        snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, &handOverBoots, this,
                                 1);
    }
    u_char id[32];
    const auto size = static_cast<int>(snmpv3_get_engineID(id, sizeof id));
    const QByteArray digits = QByteArray(reinterpret_cast<const char*>(id), size).toHex();
    if (const Error error = write(digits, static_cast<quint32>(snmpv3_local_snmpEngineBoots())))
        log::warning(error.text());
}

Error EngineIdentity::write(const QByteArray& id, quint32 boots) const
{
    return m_file.write({idWord + QString::fromLatin1(id), bootsWord + QString::number(boots)});
}

} // namespace agent
