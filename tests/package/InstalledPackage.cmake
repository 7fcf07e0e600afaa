# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --config ${CONFIG} --prefix ${prefix})

file(GLOB headers ${prefix}/include/vigil/*.h)
list(LENGTH headers header_count)
if(header_count LESS 14)
  message(FATAL_ERROR "Only ${header_count} headers are installed")
endif()
foreach(header IN LISTS headers)
  file(STRINGS ${header} qt_lines REGEX "# *include *[<\"](Q[A-Z]|Qt)")
  if(qt_lines)
    message(FATAL_ERROR "${header} needs a Qt header: ${qt_lines}")
  endif()
  if(NOT header MATCHES "/vigil_export\\.h$") # is made anew by each build, for its compiler
    file(STRINGS ${header} compiler_lines REGEX "__attribute__|__declspec|__builtin|#pragma")
    if(compiler_lines)
      message(FATAL_ERROR "${header} needs one certain compiler: ${compiler_lines}")
    endif()
  endif()
endforeach()

set(documents ${prefix}/share/doc/vigil)
expect_files(
  ${documents}/LICENSE
  ${documents}/README.md
  ${documents}/building.md
  ${documents}/examples/hello_health.cpp
  ${prefix}/share/snmp/mibs/VIGIL-MIB.txt
  ${prefix}/share/snmp/mibs/VIGIL-AGENT-MIB.txt)

build_consumer(${prefix})
file(REMOVE_RECURSE ${WORK_DIR})
