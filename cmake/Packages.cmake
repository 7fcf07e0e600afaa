# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Packages built by `cpack`: a zip file for Windows, elsewhere a .tar.gz file, and a bill of materials for it. Debian
# packages come from the folder debian, by scripts/build-packages.

set(CPACK_PACKAGE_NAME vigil)
set(CPACK_PACKAGE_VENDOR "The Vigil authors")
set(CPACK_PACKAGE_CONTACT "The Vigil authors <maintainers@vigil.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)

# PackArchive.cmake packs, since archives of CPack itself have the times and users of the build.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/PackArchive.cmake)
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_VIGIL_MODULE_DIR ${CMAKE_CURRENT_LIST_DIR})
set(CPACK_VIGIL_EPOCH ${vigil_build_epoch})

# What the bill of materials lists, see Sbom.cmake. The files are those of the archive.
if(WIN32)
  set(CPACK_SYSTEM_NAME win64)
  set(CPACK_VIGIL_ARCHIVE zip)
  set(CPACK_VIGIL_OBJCOPY ${CMAKE_OBJCOPY})
  set(CPACK_VIGIL_PARTS ${vigil_runtime_parts})
  set(CPACK_VIGIL_MISSING_LICENCES ${vigil_missing_licences})
else()
  set(CPACK_VIGIL_ARCHIVE tar.gz)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_VIGIL_PARTS "DEPENDS_ON|Qt|${Qt5_VERSION}|LGPL-3.0-only|")
  if(VIGIL_BUILD_AGENT)
    list(APPEND CPACK_VIGIL_PARTS "DEPENDS_ON|Net-SNMP|${NETSNMP_VERSION}|Net-SNMP|")
    if(SYSTEMD_FOUND)
      list(APPEND CPACK_VIGIL_PARTS "DEPENDS_ON|libsystemd|${SYSTEMD_VERSION}|LGPL-2.1-or-later|")
    endif()
    if(MICROHTTPD_FOUND)
      list(APPEND CPACK_VIGIL_PARTS "DEPENDS_ON|libmicrohttpd|${MICROHTTPD_VERSION}|LGPL-2.1-or-later|")
    endif()
  endif()
endif()

include(CPack)
