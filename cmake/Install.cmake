# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Installation folders. The MIBs go to DATADIR/snmp/mibs, where Net-SNMP's tools look if the prefix is /usr. Programs,
# libraries and headers go to the usual places, everything else to the documentation directory.
#
# Components are the packages of a distribution: runtime, dev, agent, host-health.

include(CMakePackageConfigHelpers)

set(vigil_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vigil)
set(VIGIL_UNIT_DIR lib/systemd/system CACHE STRING "Where systemd's units go, below the prefix or absolute")

# Programs find the library relative to themselves, so the prefix can be moved.
if(UNIX AND NOT APPLE AND NOT CMAKE_INSTALL_RPATH)
  file(RELATIVE_PATH vigil_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(vigil_install_rpath "$ORIGIN/${vigil_bin_to_lib}")
endif()

install(TARGETS vigil EXPORT vigil-shared
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

if(TARGET vigil_import_library)
  install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/vigil.lib DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(FILES ${PROJECT_SOURCE_DIR}/src/vigil_c.def DESTINATION ${CMAKE_INSTALL_LIBDIR} RENAME vigil.def COMPONENT dev)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vigil DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/include/vigil/vigil_export.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vigil COMPONENT dev)

install(EXPORT vigil-shared NAMESPACE vigil:: FILE vigil-shared-targets.cmake
  DESTINATION ${vigil_package_dir} COMPONENT dev)
if(VIGIL_BUILD_STATIC)
  install(TARGETS vigil_static EXPORT vigil-static ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(EXPORT vigil-static NAMESPACE vigil:: FILE vigil-static-targets.cmake
    DESTINATION ${vigil_package_dir} COMPONENT dev)
endif()
install(TARGETS vigil_testing EXPORT vigil-testing ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(EXPORT vigil-testing NAMESPACE vigil:: FILE vigil-testing-targets.cmake
  DESTINATION ${vigil_package_dir} COMPONENT dev)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vigilConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vigilConfig.cmake
  INSTALL_DESTINATION ${vigil_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vigilConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vigilConfig.cmake ${PROJECT_BINARY_DIR}/vigilConfigVersion.cmake
  DESTINATION ${vigil_package_dir} COMPONENT dev)

include(PkgConfigFile)

# vigil_install_unit(PROGRAM COMPONENT): the unit from packaging/PROGRAM.service.in, with the program's place. That is
# known only at the installation, and not at all for an archive.
function(vigil_install_unit program component)
  install(CODE "
    if(CMAKE_INSTALL_PREFIX MATCHES _CPack_Packages)
      set(VIGIL_PROGRAM /usr/local/${CMAKE_INSTALL_BINDIR}/${program})
    else()
      set(VIGIL_PROGRAM \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${program}\")
    endif()
    configure_file(\"${PROJECT_SOURCE_DIR}/packaging/${program}.service.in\"
      \"${PROJECT_BINARY_DIR}/packaging/${program}.service\" @ONLY)" COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/packaging/${program}.service DESTINATION ${VIGIL_UNIT_DIR}
    COMPONENT ${component})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/${program}.sysusers DESTINATION lib/sysusers.d
    RENAME ${program}.conf COMPONENT ${component})
endfunction()

if(VIGIL_BUILD_AGENT)
  install(TARGETS vigil-agent RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT agent)
  if(TARGET vigilctl)
    install(TARGETS vigilctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT agent)
    vigil_add_manual_page(vigilctl 1 agent)
  endif()
  if(WIN32)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/windows/README-Windows.txt DESTINATION . COMPONENT agent)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/windows/vigil-agent.conf DESTINATION ${CMAKE_INSTALL_DOCDIR}
      COMPONENT agent)
  else()
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/snmpd.conf.d/vigil.conf
      DESTINATION ${CMAKE_INSTALL_DOCDIR}/snmpd.conf.d COMPONENT agent)
  endif()
  if(SYSTEMD_FOUND) # without, the agent could not tell systemd that it is ready
    vigil_install_unit(vigil-agent agent)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/vigil-agent.socket DESTINATION ${VIGIL_UNIT_DIR} COMPONENT agent)
  endif()
endif()
if(VIGIL_BUILD_EXAMPLES)
  install(TARGETS vigil-host-health RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT host-health)
  if(WIN32)
    install(TARGETS hello_health RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT dev) # to try out without a compiler
  else()
    vigil_install_unit(vigil-host-health host-health)
    vigil_add_manual_page(vigil-host-health 8 host-health)
  endif()
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
  ${PROJECT_SOURCE_DIR}/docs/checks.schema.json
  ${PROJECT_SOURCE_DIR}/docs/cost.svg
  ${PROJECT_SOURCE_DIR}/docs/operations.md
  ${PROJECT_SOURCE_DIR}/docs/page.png
  ${PROJECT_SOURCE_DIR}/docs/performance.md
  ${PROJECT_SOURCE_DIR}/docs/security.md
  ${PROJECT_SOURCE_DIR}/docs/vigil-agent.8.md
  ${PROJECT_SOURCE_DIR}/docs/vigil-host-health.8.md
  ${PROJECT_SOURCE_DIR}/docs/vigilctl.1.md
  ${PROJECT_SOURCE_DIR}/docs/wire-protocol.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev
  FILES_MATCHING PATTERN "*.c" PATTERN "*.cpp" PATTERN "*.h" PATTERN "*.py" PATTERN "CMakeLists.txt")
