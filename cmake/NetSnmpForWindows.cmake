# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# PkgConfig::NETSNMP for Windows, from the static libraries of scripts/build-windows-net-snmp in VIGIL_NET_SNMP.

add_library(PkgConfig::NETSNMP INTERFACE IMPORTED)
target_include_directories(PkgConfig::NETSNMP SYSTEM INTERFACE ${VIGIL_NET_SNMP}/include)
target_link_libraries(PkgConfig::NETSNMP INTERFACE
  ${VIGIL_NET_SNMP}/lib/libnetsnmpmibs.a
  ${VIGIL_NET_SNMP}/lib/libnetsnmpagent.a
  ${VIGIL_NET_SNMP}/lib/libnetsnmp.a
  ${VIGIL_NET_SNMP}/lib/libcrypto.a
  ws2_32 crypt32 iphlpapi advapi32)
