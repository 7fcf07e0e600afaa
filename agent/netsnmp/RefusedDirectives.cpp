// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/RefusedDirectives.h"

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

constexpr const char* refused[] = {"perl",           "usmUser",   "vacmAccess",
                                   "vacmAuthAccess", "vacmGroup", "vacmView"};

void refuse(const char*, char*)
{
    config_perror("this directive is not for the configuration of vigil-agent");
}

} // namespace

void refuseDirectives()
{
    for (const char* directive : refused)
        snmpd_register_config_handler(directive, &refuse, nullptr, nullptr);
    register_config_handler("snmp", "doDebugging", &refuse, nullptr, nullptr);
}

} // namespace agent
