# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# vigil_runtime_dlls: the DLLs of Qt and of the compiler. Programs for Windows need them in their own folder, so they are
# copied to the build's program folder. vigil_runtime_licences: their licences, each as "installed name=file".
# vigil_missing_licences: those that are not here. vigil_runtime_parts: the DLLs as parts of a bill of materials, see
# Sbom.cmake.

# The same sources always give the same files.
add_link_options(LINKER:--no-insert-timestamp)

set(vigil_runtime_dlls "")
foreach(target Qt5::Core Qt5::Network)
  get_target_property(dll ${target} IMPORTED_LOCATION_RELEASE)
  list(APPEND vigil_runtime_dlls ${dll})
endforeach()
foreach(name libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE dll
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(dll ${dll} ABSOLUTE)
  if(EXISTS ${dll})
    list(APPEND vigil_runtime_dlls ${dll})
  endif()
endforeach()
file(COPY ${vigil_runtime_dlls} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

get_filename_component(qt_prefix ${Qt5Core_DIR}/../../.. ABSOLUTE)
set(agent_licences "") # of what vigil-agent links statically
if(VIGIL_BUILD_AGENT)
  set(agent_licences
    net-snmp-COPYING.txt=${VIGIL_NET_SNMP}/net-snmp-COPYING
    net-snmp-version.txt=${VIGIL_NET_SNMP}/net-snmp-version
    openssl-LICENSE.txt=${VIGIL_NET_SNMP}/openssl-LICENSE.txt
    openssl-version.txt=${VIGIL_NET_SNMP}/openssl-version)
  if(VIGIL_MICROHTTPD)
    list(APPEND agent_licences
      libmicrohttpd-COPYING.txt=${VIGIL_MICROHTTPD}/libmicrohttpd-COPYING
      libmicrohttpd-version.txt=${VIGIL_MICROHTTPD}/libmicrohttpd-version)
  endif()
endif()
set(vigil_runtime_licences "")
set(vigil_missing_licences "")
foreach(licence
    qt-LGPL-3.txt=${qt_prefix}/LICENSE.LGPL3
    qt-GPL-3.txt=${qt_prefix}/LICENSE.GPL3
    qt-copyright.txt=/usr/share/doc/qtbase5-dev/copyright
    gcc-copyright.txt=/usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright
    mingw-w64-copyright.txt=/usr/share/doc/mingw-w64-x86-64-dev/copyright
    ${agent_licences})
  string(REGEX REPLACE ".*=" "" file ${licence})
  if(EXISTS ${file})
    list(APPEND vigil_runtime_licences ${licence})
  else()
    list(APPEND vigil_missing_licences ${file})
  endif()
endforeach()
if(vigil_missing_licences)
  message(STATUS "Licences not found, so there can be no package: ${vigil_missing_licences}")
endif()

# vigil_package_field(PACKAGE FIELD RESULT): a field of a Debian package of this system, empty without Debian.
function(vigil_package_field package field result)
  execute_process(COMMAND dpkg-query --show "--showformat=\${${field}}" ${package}
    OUTPUT_VARIABLE value ERROR_QUIET)
  set(${result} "${value}" PARENT_SCOPE)
endfunction()
vigil_package_field(mingw-w64-x86-64-dev source:Version mingw_version)
# The package has a version of its own; this field has that of GCC: "gcc-12 (= 12.2.0-14)".
vigil_package_field(gcc-mingw-w64-x86-64-posix-runtime Built-Using gcc_version)
string(REGEX REPLACE ".*gcc-[0-9]+ \\(= ([^)]*)\\).*" "\\1" gcc_version "${gcc_version}")
set(vigil_runtime_parts
  "CONTAINS|Qt5Core|${Qt5_VERSION}|LGPL-3.0-only|bin/Qt5Core.dll"
  "CONTAINS|Qt5Network|${Qt5_VERSION}|LGPL-3.0-only|bin/Qt5Network.dll"
  "CONTAINS|libgcc|${gcc_version}|GPL-3.0-or-later WITH GCC-exception-3.1|bin/libgcc_s_seh-1.dll"
  "CONTAINS|libstdc++|${gcc_version}|GPL-3.0-or-later WITH GCC-exception-3.1|bin/libstdc++-6.dll"
  "CONTAINS|mingw-w64 runtime|${mingw_version}|ZPL-2.1|bin/vigil.dll"
  "CONTAINS|winpthreads|${mingw_version}|MIT AND BSD-3-Clause|bin/libwinpthread-1.dll")
include(QtParts)
vigil_qt_parts(qt_parts)
list(APPEND vigil_runtime_parts ${qt_parts})
if(VIGIL_BUILD_AGENT)
  file(STRINGS ${VIGIL_NET_SNMP}/net-snmp-version net_snmp_version)
  file(STRINGS ${VIGIL_NET_SNMP}/openssl-version openssl_version)
  list(APPEND vigil_runtime_parts
    "CONTAINS|net-snmp|${net_snmp_version}|Net-SNMP|bin/vigil-agent.exe"
    "CONTAINS|openssl|${openssl_version}|Apache-2.0|bin/vigil-agent.exe")
  if(VIGIL_MICROHTTPD)
    file(STRINGS ${VIGIL_MICROHTTPD}/libmicrohttpd-version microhttpd_version)
    list(APPEND vigil_runtime_parts
      "CONTAINS|libmicrohttpd|${microhttpd_version}|LGPL-2.1-or-later|bin/vigil-agent.exe")
  endif()
endif()
