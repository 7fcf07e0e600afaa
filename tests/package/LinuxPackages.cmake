# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(packages ${WORK_DIR}/packages)
run(${CPACK} --config ${BUILD_DIR}/CPackConfig.cmake -C ${CONFIG} -B ${packages})

# --- Debian packages

function(package_file name result)
  file(GLOB file ${packages}/${name}_1.0.0_*.deb)
  if(NOT file)
    message(FATAL_ERROR "There is no package ${name}")
  endif()
  set(${result} ${file} PARENT_SCOPE)
endfunction()

function(expect_dependency name pattern)
  package_file(${name} file)
  run(${DPKG_DEB} --field ${file} Depends)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "${name} depends on \"${output}\"")
  endif()
endfunction()

set(root ${WORK_DIR}/root)
file(MAKE_DIRECTORY ${root})
foreach(name libvigil1 libvigil-dev vigil-agent)
  package_file(${name} file)
  run(${DPKG_DEB} --extract ${file} ${root})
  expect_files(${root}/usr/share/doc/${name}/copyright)
endforeach()
expect_dependency(libvigil1 "libqt5core5a.*libqt5network5")
expect_dependency(libvigil-dev "libvigil1 \\(= 1\\.0\\.0\\)")
expect_dependency(vigil-agent "libsnmp")
expect_files(
  ${root}/usr/share/snmp/mibs/VIGIL-MIB.txt
  ${root}/usr/share/snmp/mibs/VIGIL-AGENT-MIB.txt
  ${root}/usr/share/doc/vigil/examples/hello_health.cpp)
run(${root}/usr/bin/vigil-agent --version)
if(EXISTS ${root}/usr/lib/systemd/system/vigil-agent.service)
  file(STRINGS ${root}/usr/lib/systemd/system/vigil-agent.service line REGEX "^ExecStart=")
  string(REGEX MATCH "=([^ ]*)" unused "${line}")
  set(program ${CMAKE_MATCH_1})
  expect_files(${root}${program} ${root}/usr/lib/systemd/system/vigil-agent.socket)

  if(SYSTEMD_ANALYZE) # it looks for the program where it will be installed
    file(COPY ${root}/usr/lib/systemd/system/ DESTINATION ${WORK_DIR}/units)
    file(READ ${WORK_DIR}/units/vigil-agent.service unit)
    string(REPLACE "ExecStart=${program}" "ExecStart=${root}${program}" unit "${unit}")
    file(WRITE ${WORK_DIR}/units/vigil-agent.service "${unit}")
    run(${SYSTEMD_ANALYZE} verify --man=no
      ${WORK_DIR}/units/vigil-agent.service ${WORK_DIR}/units/vigil-agent.socket)
    if(output MATCHES "vigil-agent") # bad lines are only ignored
      message(FATAL_ERROR "The units have mistakes:\n${output}")
    endif()
    run(${SYSTEMD_ANALYZE} --help)
    if(output MATCHES "--offline") # since systemd 250; 12 stands for an exposure of 1.2
      run(${SYSTEMD_ANALYZE} security --offline=true --threshold=12 ${WORK_DIR}/units/vigil-agent.service)
    endif()
  endif()
endif()
build_consumer(${root}/usr)

# --- The archive

file(GLOB archive ${packages}/vigil-1.0.0-*.tar.gz)
if(NOT archive)
  message(FATAL_ERROR "There is no .tar.gz file")
endif()
set(folder ${WORK_DIR}/archive)
file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${folder})
file(GLOB prefix ${folder}/vigil-1.0.0-*)
expect_files(${prefix}/share/snmp/mibs/VIGIL-MIB.txt)
run(${prefix}/bin/vigil-agent --version)
run(${prefix}/bin/vigil-host-health --help)
build_consumer(${prefix})

file(REMOVE_RECURSE ${WORK_DIR})
