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
check_sbom(${archive}.zip
  vigil Qt5Core Qt5Network libgcc libstdc\\+\\+ "mingw-w64 runtime" winpthreads
  "Big5, [^;]* text codecs" CLDR "FreeBSD strtoll and strtoull" HarfBuzz Keccak MD4 MD5 PCRE2
  "PCRE2 just-in-time compiler" "Public Suffix List" "RFC 6234 secure hash algorithms"
  "Robert Penner's easing equations" SHA-1 TinyCBOR "Unicode Character Database" brg_endian double-conversion
  shared-mime-info zlib
  net-snmp openssl)
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

# Each DLL is the file of a part. What the programs say of their parts agrees with the list.
file(GLOB dlls RELATIVE ${prefix}/bin ${prefix}/bin/*.dll)
foreach(dll IN LISTS dlls)
  list(FIND sbom_files ${dll} position)
  if(position EQUAL -1)
    message(FATAL_ERROR "The bill of materials has no part with ${dll}: ${sbom_files}")
  endif()
endforeach()
# expect_part(PROGRAM TEXT PART): a line of the program matches TEXT; its first group, if any, is the part's version.
function(expect_part program text part)
  file(STRINGS ${prefix}/bin/${program} lines REGEX "${text}")
  if(NOT lines)
    message(FATAL_ERROR "${program} does not have \"${text}\"")
  endif()
  list(GET lines 0 line)
  string(REGEX MATCH "${text}" unused "${line}")
  if(NOT ";${sbom_versions}" MATCHES ";${part}=${CMAKE_MATCH_1}")
    message(FATAL_ERROR "${program} has ${part} ${CMAKE_MATCH_1}, unlike the bill of materials: ${sbom_versions}")
  endif()
endfunction()
expect_part(Qt5Core.dll "inflate ([0-9.]+) Copyright" zlib)
expect_part(Qt5Core.dll "missing closing parenthesis" PCRE2)
expect_part(Qt5Core.dll "QBig5Codec" "Big5, [^;]* text codecs")
expect_part(vigil-agent.exe "^(5\\.[0-9]+\\.[0-9]+)$" net-snmp)
expect_part(vigil-agent.exe "CRYPTOGAMS" openssl)

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
  ${documents}/third-party/libmicrohttpd-COPYING.txt
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
