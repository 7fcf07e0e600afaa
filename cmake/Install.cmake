# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Installation folders. The MIBs go to DATADIR/snmp/mibs, where Net-SNMP's tools look if the prefix is /usr. Programs,
# libraries and headers go to the usual places, everything else to the documentation directory.
#
# Components are the packages of a distribution: runtime, dev, agent.

include(CMakePackageConfigHelpers)

set(vigil_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vigil)

# Programs find the library relative to themselves, so the prefix can be moved.
if(UNIX AND NOT APPLE AND NOT CMAKE_INSTALL_RPATH)
  file(RELATIVE_PATH vigil_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(vigil_install_rpath "$ORIGIN/${vigil_bin_to_lib}")
endif()

install(TARGETS vigil EXPORT vigilTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
if(vigil_runtime_dlls)
  install(FILES ${vigil_runtime_dlls} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
  foreach(licence IN LISTS vigil_runtime_licences)
    string(REGEX MATCH "(.*)=(.*)" licence ${licence})
    install(FILES ${CMAKE_MATCH_2} DESTINATION ${CMAKE_INSTALL_DOCDIR}/third-party RENAME ${CMAKE_MATCH_1}
      COMPONENT runtime)
  endforeach()
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/windows/THIRD-PARTY.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/third-party COMPONENT runtime)
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vigil DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/include/vigil/vigil_export.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vigil COMPONENT dev)

install(EXPORT vigilTargets NAMESPACE vigil:: DESTINATION ${vigil_package_dir} COMPONENT dev)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vigilConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vigilConfig.cmake
  INSTALL_DESTINATION ${vigil_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vigilConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vigilConfig.cmake ${PROJECT_BINARY_DIR}/vigilConfigVersion.cmake
  DESTINATION ${vigil_package_dir} COMPONENT dev)

if(VIGIL_BUILD_AGENT)
  install(TARGETS vigil-agent RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT agent)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/snmpd.conf.d/vigil.conf
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/snmpd.conf.d COMPONENT agent)
  if(SYSTEMD_FOUND) # without, the agent could not tell systemd that it is ready
    install(CODE "
      if(CMAKE_INSTALL_PREFIX MATCHES _CPack_Packages) # an archive: its final place is unknown
        set(VIGIL_AGENT /usr/local/${CMAKE_INSTALL_BINDIR}/vigil-agent)
      else()
        set(VIGIL_AGENT \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/vigil-agent\") # only known now
      endif()
      configure_file(\"${PROJECT_SOURCE_DIR}/packaging/vigil-agent.service.in\"
        \"${PROJECT_BINARY_DIR}/packaging/vigil-agent.service\" @ONLY)" COMPONENT agent)
    install(FILES
      ${PROJECT_BINARY_DIR}/packaging/vigil-agent.service
      ${PROJECT_SOURCE_DIR}/packaging/vigil-agent.socket
      DESTINATION lib/systemd/system COMPONENT agent)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/vigil-agent.sysusers DESTINATION lib/sysusers.d
      RENAME vigil-agent.conf COMPONENT agent)
  endif()
  if(TARGET vigil-agent-man)
    install(FILES ${PROJECT_BINARY_DIR}/docs/vigil-agent.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT agent)
  endif()
endif()
if(VIGIL_BUILD_EXAMPLES)
  set(vigil_installed_examples vigil-host-health)
  if(WIN32)
    list(APPEND vigil_installed_examples hello_health) # to try out without a compiler
  endif()
  install(TARGETS ${vigil_installed_examples} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT dev)
  if(vigil_install_rpath)
    set_target_properties(vigil-host-health PROPERTIES INSTALL_RPATH "${vigil_install_rpath}")
  endif()
endif()

install(FILES ${PROJECT_SOURCE_DIR}/mibs/VIGIL-MIB.txt ${PROJECT_SOURCE_DIR}/mibs/VIGIL-AGENT-MIB.txt
  DESTINATION ${CMAKE_INSTALL_DATADIR}/snmp/mibs COMPONENT agent)
install(FILES
  ${PROJECT_SOURCE_DIR}/LICENSE
  ${PROJECT_SOURCE_DIR}/README.md
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  ${PROJECT_SOURCE_DIR}/docs/abi.md
  ${PROJECT_SOURCE_DIR}/docs/architecture.md
  ${PROJECT_SOURCE_DIR}/docs/building.md
  ${PROJECT_SOURCE_DIR}/docs/cost.svg
  ${PROJECT_SOURCE_DIR}/docs/operations.md
  ${PROJECT_SOURCE_DIR}/docs/performance.md
  ${PROJECT_SOURCE_DIR}/docs/security.md
  ${PROJECT_SOURCE_DIR}/docs/vigil-agent.8.md
  ${PROJECT_SOURCE_DIR}/docs/wire-protocol.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.cpp" PATTERN "*.h" PATTERN "CMakeLists.txt")
if(CMAKE_SYSTEM_NAME STREQUAL "Linux") # each Debian package has a copyright file
  foreach(package runtime=libvigil${PROJECT_VERSION_MAJOR} dev=libvigil-dev agent=vigil-agent)
    string(REGEX MATCH "(.*)=(.*)" package ${package})
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CMAKE_MATCH_2}
      RENAME copyright COMPONENT ${CMAKE_MATCH_1})
  endforeach()
endif()
