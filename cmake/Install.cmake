# What `cmake --install` puts where. The MIB goes to DATADIR/snmp/mibs, where Net-SNMP's tools look when the prefix
# is /usr. Everything else that is not a program, a library or a header goes to the documentation directory.

include(CMakePackageConfigHelpers)

set(vigil_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vigil)

# Programs find the library beside themselves, wherever the prefix is moved to.
if(UNIX AND NOT APPLE AND NOT CMAKE_INSTALL_RPATH)
  file(RELATIVE_PATH vigil_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(vigil_install_rpath "$ORIGIN/${vigil_bin_to_lib}")
endif()

install(TARGETS vigil EXPORT vigilTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vigil DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/include/vigil/vigil_export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vigil)

install(EXPORT vigilTargets NAMESPACE vigil:: DESTINATION ${vigil_package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vigilConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vigilConfig.cmake
  INSTALL_DESTINATION ${vigil_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vigilConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vigilConfig.cmake ${PROJECT_BINARY_DIR}/vigilConfigVersion.cmake
  DESTINATION ${vigil_package_dir})

if(vigil_runtime_dlls)
  install(FILES ${vigil_runtime_dlls} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

if(VIGIL_BUILD_AGENT)
  install(TARGETS vigil-agent RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/snmpd.conf.d/vigil.conf
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/snmpd.conf.d)
  if(SYSTEMD_FOUND) # without, the agent could not tell systemd that it is ready
    install(CODE "
      set(VIGIL_AGENT \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/vigil-agent\") # known only now
      configure_file(\"${PROJECT_SOURCE_DIR}/packaging/vigil-agent.service.in\"
        \"${PROJECT_BINARY_DIR}/packaging/vigil-agent.service\" @ONLY)")
    install(FILES ${PROJECT_BINARY_DIR}/packaging/vigil-agent.service DESTINATION lib/systemd/system)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/vigil-agent.sysusers DESTINATION lib/sysusers.d
      RENAME vigil-agent.conf)
  endif()
  if(TARGET vigil-agent-man)
    install(FILES ${PROJECT_BINARY_DIR}/docs/vigil-agent.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
  endif()
endif()
if(VIGIL_BUILD_EXAMPLES)
  install(TARGETS vigil-host-health RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  if(vigil_install_rpath)
    set_target_properties(vigil-host-health PROPERTIES INSTALL_RPATH "${vigil_install_rpath}")
  endif()
endif()

install(FILES ${PROJECT_SOURCE_DIR}/mibs/VIGIL-MIB.txt ${PROJECT_SOURCE_DIR}/mibs/VIGIL-AGENT-MIB.txt
  DESTINATION ${CMAKE_INSTALL_DATADIR}/snmp/mibs)
install(FILES
  ${PROJECT_SOURCE_DIR}/LICENSE
  ${PROJECT_SOURCE_DIR}/README.md
  ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  ${PROJECT_SOURCE_DIR}/docs/architecture.md
  ${PROJECT_SOURCE_DIR}/docs/operations.md
  ${PROJECT_SOURCE_DIR}/docs/vigil-agent.8.md
  ${PROJECT_SOURCE_DIR}/docs/wire-protocol.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.cpp" PATTERN "*.h" PATTERN "CMakeLists.txt")
