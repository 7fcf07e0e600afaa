# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(cpack ${CPACK} --config ${BUILD_DIR}/CPackConfig.cmake -C ${CONFIG} -B ${WORK_DIR}/packages)

execute_process(COMMAND ${cpack} -D CPACK_VIGIL_MISSING_LICENCES=/nowhere/LICENCE
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(result EQUAL 0 OR NOT output MATCHES "must have these licences: /nowhere/LICENCE")
  message(FATAL_ERROR "Packaging without a licence ended with ${result}:\n${output}")
endif()

run(${cpack})
set(archive ${WORK_DIR}/packages/vigil-1.0.0-win64)
check_sbom(${archive}.zip vigil Qt5Core Qt5Network libgcc libstdc\\+\\+ winpthreads net-snmp openssl)
set(folder ${WORK_DIR}/unpacked)
unpack(${archive}.zip ${folder})
unpack(${archive}-debug.zip ${folder})

# Debug information is in files of its own.
set(debug ${folder}/vigil-1.0.0-win64-debug/bin/vigil.dll.debug)
expect_files(${debug})
run(${OBJDUMP} --section-headers ${debug})
if(NOT output MATCHES "\\.debug_info")
  message(FATAL_ERROR "${debug} has no debug information:\n${output}")
endif()
file(GLOB programs ${folder}/vigil-1.0.0-win64/bin/*.dll ${folder}/vigil-1.0.0-win64/bin/*.exe)
foreach(program IN LISTS programs)
  run(${OBJDUMP} --section-headers ${program})
  if(output MATCHES "\\.debug_info")
    message(FATAL_ERROR "${program} is not stripped")
  endif()
endforeach()
set(prefix ${folder}/vigil-1.0.0-win64)
set(documents ${prefix}/share/doc/vigil)
foreach(dll vigil Qt5Core Qt5Network libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
  expect_files(${prefix}/bin/${dll}.dll)
endforeach()
expect_files(
  ${prefix}/lib/libvigil.dll.a
  ${prefix}/lib/vigil.lib
  ${prefix}/lib/vigil.def
  ${prefix}/include/vigil/vigil_c.h
  ${prefix}/include/vigil/vigil.h
  ${prefix}/share/snmp/mibs/VIGIL-MIB.txt
  ${documents}/README.md
  ${documents}/LICENSE
  ${documents}/building.md
  ${documents}/third-party/THIRD-PARTY.md
  ${documents}/third-party/qt-LGPL-3.txt
  ${documents}/third-party/qt-GPL-3.txt
  ${documents}/third-party/qt-copyright.txt
  ${documents}/third-party/gcc-copyright.txt
  ${documents}/third-party/mingw-w64-copyright.txt
  ${documents}/third-party/net-snmp-COPYING.txt
  ${documents}/third-party/openssl-LICENSE.txt
  ${documents}/vigil-agent.conf
  ${prefix}/README-Windows.txt
  ${prefix}/bin/vigil-agent.exe)

# The examples, from source and as they come.
set(build ${WORK_DIR}/build)
configure(${documents}/examples ${build} ${prefix})
run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})
prepare_environment(${prefix})
run(${EMULATOR} ${build}/hello_health.exe)
if(NOT output MATCHES "Hello, health - out of warning range: seconds is 5 s\\.")
  message(FATAL_ERROR "hello_health printed\n${output}")
endif()
file(GLOB log_files ${WORK_DIR}/log/*.log)
if(NOT log_files)
  message(FATAL_ERROR "hello_health left no log")
endif()

set(ENV{WINEPATH} "") # programs find what is beside them
run(${EMULATOR} ${prefix}/bin/hello_health.exe)
run(${EMULATOR} ${prefix}/bin/vigil-host-health.exe --help)
run(${EMULATOR} ${prefix}/bin/vigil-agent.exe --version)

file(REMOVE_RECURSE ${WORK_DIR})
