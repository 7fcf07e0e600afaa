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
file(GLOB_RECURSE headers ${prefix}/include/vigil/*.h)
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
  ${documents}/examples/tested-application/OrderQueueTest.cpp
  ${prefix}/share/snmp/mibs/VIGIL-MIB.txt
  ${prefix}/share/snmp/mibs/VIGIL-AGENT-MIB.txt)

build_consumer(${prefix})
test_an_application(${prefix})

# find_package says what is missing.
function(expect_refusal components message)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${WORK_DIR}/refused -G ${GENERATOR} -D CMAKE_PREFIX_PATH=${prefix}
      -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -D COMPONENTS=${components}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  string(REGEX REPLACE "[ \n]+" " " output "${output}") # CMake wraps the lines
  string(FIND "${output}" "${message}" position)
  if(result EQUAL 0 OR position EQUAL -1)
    message(FATAL_ERROR "find_package with ${components} ended with ${result}:\n${output}")
  endif()
endfunction()
expect_refusal(shred "vigil has no component \"shred\"; it has: shared, static, testing")
file(GLOB static_library ${prefix}/lib/libvigil.a ${prefix}/lib/*/libvigil.a)
if(NOT static_library)
  expect_refusal(static
    "the component \"static\" of vigil is not installed: build vigil with -D VIGIL_BUILD_STATIC=ON")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
