// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/NamedReceivers.h"

#include <map>

#include "agent/netsnmp/NetSnmp.h"
#include "agent/netsnmp/NotificationReceiverFilter.h"

namespace agent {

namespace {

using Parse = void (*)(const char* directive, char* line);

const std::map<QByteArray, Parse> directives{{"trapsink", &snmpd_parse_config_trapsink},
                                             {"trap2sink", &snmpd_parse_config_trap2sink},
                                             {"informsink", &snmpd_parse_config_informsink},
                                             {"trapsess", &snmpd_parse_config_trapsess}};

NamedReceivers* instance = nullptr; // Net-SNMP's handlers take no argument of ours

void parse(const QByteArray& directive, QByteArray line)
{
    directives.at(directive)(directive.constData(), line.data());
}

/// The receiver's address in the line: the last word of a trapsess; otherwise the first after the options,
/// which have a value each. Net-SNMP crashes where it starts as an option does.
QByteArray addressIn(const QByteArray& directive, const QByteArray& line)
{
    const QList<QByteArray> words = line.simplified().split(' ');
    if (directive == "trapsess")
        return words.last();
    int position = 0;
    while (position + 2 < words.size() && words[position].startsWith('-'))
        position += 2;
    return words[position];
}

} // namespace

NamedReceivers::~NamedReceivers()
{
    instance = nullptr;
}

void NamedReceivers::takeOver()
{
    instance = this;
    for (const auto& [directive, parser] : directives)
        snmpd_register_config_handler(directive.constData(), &NamedReceivers::handleLine,
                                      &NamedReceivers::forgetAll, "receiver of notifications");
}

void NamedReceivers::handleLine(const char* directive, char* line)
{
    if (instance)
        instance->add(directive, line);
}

void NamedReceivers::forgetAll()
{
    if (instance)
        instance->m_lookups.clear();
    snmpd_free_trapsinks();
}

void NamedReceivers::add(const QByteArray& directive, const QByteArray& line)
{
    const QByteArray address = addressIn(directive, line);
    if (address.startsWith('-'))
        return config_perror("missing address of the receiver");
    const std::optional<NamedAddress> named = NamedAddress::of(QString::fromLocal8Bit(address));
    if (!named)
        return parse(directive, line);
    const int position = directive == "trapsess" ? line.lastIndexOf(address) : line.indexOf(address);
    const auto found = [=](const QString& numbers) {
        const NotificationReceiverFilter filter;
        QByteArray complete = line;
        parse(directive, complete.replace(position, address.size(), numbers.toLocal8Bit()));
    };
    m_lookups.push_back(std::make_unique<HostLookup>(*named, m_clock, found));
    m_lookups.back()->start();
}

} // namespace agent
