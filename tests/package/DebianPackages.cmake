# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by scripts/test-packages: the packages of PACKAGES, unpacked into one root.

set(CONSUMER_DIR ${CMAKE_CURRENT_LIST_DIR}/consumer)
set(CONFIG Release)
set(GENERATOR Ninja)
set(COMPILER c++)
find_program(SYSTEMD_ANALYZE systemd-analyze)
include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

set(root ${WORK_DIR}/root)
file(MAKE_DIRECTORY ${root})
foreach(name libvigil1 libvigil-dev vigil-agent vigil-host-health monitoring-plugins-vigil)
  file(GLOB file ${PACKAGES}/${name}_1.0.0_*.deb)
  set(${name} ${file})
  run(dpkg-deb --extract ${file} ${root})
  expect_files(${root}/usr/share/doc/${name}/copyright)
endforeach()

# --- Contents

expect_files(
  ${root}/etc/default/vigil-agent
  ${root}/etc/default/vigil-host-health
  ${root}/usr/lib/sysusers.d/vigil-agent.conf
  ${root}/usr/lib/sysusers.d/vigil-host-health.conf
  ${root}/usr/share/doc/libvigil-dev/examples/hello_health.cpp
  ${root}/usr/share/doc/libvigil-dev/html/index.html
  ${root}/usr/share/doc/libvigil-dev/html/group__checks.html
  ${root}/usr/share/doc/vigil-agent/checks.schema.json
  ${root}/usr/share/doc/vigil-agent/operations.md
  ${root}/usr/lib/nagios/plugins/check_vigil
  ${root}/usr/share/doc/monitoring-plugins-vigil/examples/icinga/vigil.conf
  ${root}/usr/share/man/man1/check_vigil.1.gz
  ${root}/usr/share/snmp/mibs/VIGIL-AGENT-MIB.txt
  ${root}/usr/share/snmp/mibs/VIGIL-MIB.txt)
file(GLOB programs ${root}/usr/bin/*)
foreach(program IN LISTS programs)
  get_filename_component(name ${program} NAME)
  file(GLOB page ${root}/usr/share/man/man*/${name}.[0-9].gz)
  if(NOT page)
    message(FATAL_ERROR "${name} has no manual page")
  endif()
  run(readelf --dynamic --program-headers ${program})
  foreach(hardened "DF_1_PIE|PIE" BIND_NOW GNU_RELRO)
    if(NOT output MATCHES "${hardened}")
      message(FATAL_ERROR "${program} lacks ${hardened}")
    endif()
  endforeach()
endforeach()
file(GLOB_RECURSE unit ${root}/*/systemd/system/vigil-agent.service)
get_filename_component(units ${unit} DIRECTORY)
check_units(${units} ${root}/usr/bin)

# --- Dependencies

function(expect_dependency name pattern)
  run(dpkg-deb --field ${${name}} Depends)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "${name} depends on \"${output}\"")
  endif()
endfunction()
expect_dependency(libvigil1 "libqt5core5a.*libqt5network5")
expect_dependency(libvigil-dev "libvigil1 \\(= 1\\.0\\.0\\)")
expect_dependency(vigil-agent "libsnmp")
expect_dependency(monitoring-plugins-vigil "python3, snmp")
expect_dependency(vigil-host-health "libvigil1 \\(>= 1\\.0\\.0\\)")
check_sbom(${libvigil1} libvigil1 libqt5core5a libqt5network5)
check_sbom(${libvigil-dev} libvigil-dev libvigil1
  "Doxygen's scripts" jQuery "jQuery UI" "jQuery UI Touch Punch" jQuery.scrollTo PowerTip SmartMenus)
file(GLOB_RECURSE scripts RELATIVE ${root} ${root}/*.js)
foreach(script IN LISTS scripts)
  if(NOT script MATCHES "/libvigil-dev/html/(jquery|dynsections|menudata)\\.js$")
    message(FATAL_ERROR "Is the origin of ${script} in the bill of materials?")
  endif()
endforeach()
check_sbom(${vigil-agent} vigil-agent libsnmp40 libqt5network5)
check_sbom(${vigil-host-health} vigil-host-health libvigil1)

# --- An application, and a package of it

build_consumer(${root}/usr -D COMPONENTS=shared,static)
test_an_application(${root}/usr)

set(tree ${WORK_DIR}/tree/libvigil1)
file(MAKE_DIRECTORY ${WORK_DIR}/tree)
run(dpkg-deb --raw-extract ${libvigil1} ${tree})
file(WRITE ${WORK_DIR}/hello/debian/control "Source: hello\n\nPackage: hello\nArchitecture: any\n")
file(COPY ${WORK_DIR}/build/consumer DESTINATION ${WORK_DIR}/hello)
execute_process(COMMAND dpkg-shlibdeps -O -S${tree} consumer WORKING_DIRECTORY ${WORK_DIR}/hello
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
if(NOT result EQUAL 0 OR NOT output MATCHES "libvigil1 \\(>= 1\\.0\\.0\\)")
  message(FATAL_ERROR "dpkg-shlibdeps ended with ${result}:\n${output}${error}")
endif()
