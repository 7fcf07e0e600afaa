// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/OwnFiles.h"

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

void keepToOwnFiles(const QByteArray& directory)
{
    for (const int setting : {NETSNMP_DS_LIB_PERSISTENT_DIR, NETSNMP_DS_LIB_CONFIGURATION_DIR})
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, setting, directory.constData());
    for (const int setting : {NETSNMP_DS_LIB_DONT_READ_CONFIGS, NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES,
                              NETSNMP_DS_LIB_DONT_PERSIST_STATE, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD,
                              NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, NETSNMP_DS_LIB_ALARM_DONT_USE_SIG})
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, setting, 1);
    // The agent prints no names. Reading the host's MIB modules would only log the missing ones.
    qputenv("MIBS", "");
    qputenv("MIBDIRS", "");
    qputenv("SNMP_IGNORE_WINDOWS_REGISTRY", "1"); // it would replace folders set here
}

} // namespace agent
