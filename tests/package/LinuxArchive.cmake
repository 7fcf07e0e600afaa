# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(packages ${WORK_DIR}/packages)
run(${CPACK} --config ${BUILD_DIR}/CPackConfig.cmake -C ${CONFIG} -B ${packages})

file(GLOB archive ${packages}/vigil-1.0.0-*.tar.gz)
if(NOT archive)
  message(FATAL_ERROR "There is no .tar.gz file")
endif()
check_sbom(${archive} vigil Qt Net-SNMP)
set(folder ${WORK_DIR}/archive)
unpack(${archive} ${folder})
file(GLOB prefix ${folder}/vigil-1.0.0-*)
expect_files(
  ${prefix}/share/snmp/mibs/VIGIL-MIB.txt
  ${prefix}/share/doc/vigil/operations.md)
run(${prefix}/bin/vigil-agent --version)
run(${prefix}/bin/vigil-host-health --help)
check_units(${prefix}/lib/systemd/system ${prefix}/bin)
build_consumer(${prefix})

file(REMOVE_RECURSE ${WORK_DIR})
