# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Shared by the scripts of this folder. CTest runs them, see CMakeLists.txt. A failing step ends the script with an
# error.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nfailed with ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_files)
  foreach(file IN LISTS ARGN)
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "There is no ${file}")
    endif()
  endforeach()
endfunction()

# configure(SOURCE_DIR BUILD_DIR PREFIX): a separate project, against the installation in PREFIX.
function(configure source build prefix)
  if(TOOLCHAIN)
    set(tools -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
    list(GET EMULATOR -1 wine_prefix)
    set(ENV{WINEPREFIX} ${wine_prefix}) # creating one is slow
  else()
    set(tools -D CMAKE_CXX_COMPILER=${COMPILER})
  endif()
  run(${CMAKE_COMMAND} -S ${source} -B ${build} -G ${GENERATOR}
    -D CMAKE_BUILD_TYPE=${CONFIG}
    ${tools}
    -D CMAKE_CXX_FLAGS=${FLAGS}
    -D CMAKE_PREFIX_PATH=${prefix})
endfunction()

# Lets later programs find the DLLs in PREFIX. Nothing listens on port 1: they must run without a
# service, too.
macro(prepare_environment prefix)
  set(ENV{VIGIL_SERVICE_PORT} 1)
  set(ENV{VIGIL_LOG_DIR} ${DRIVE}${WORK_DIR}/log)
  set(ENV{WINEPATH} ${DRIVE}${prefix}/bin) # like PATH on Windows itself
endmacro()

# Builds the consumer project and runs it.
function(build_consumer prefix)
  set(build ${WORK_DIR}/build)
  file(REMOVE_RECURSE ${build} ${WORK_DIR}/log)
  configure(${CONSUMER_DIR} ${build} ${prefix})
  run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})
  prepare_environment(${prefix})
  run(${CMAKE_CTEST_COMMAND} --test-dir ${build} -C ${CONFIG} --output-on-failure)
  if(NOT EXISTS ${WORK_DIR}/log)
    message(FATAL_ERROR "The consumer left no log: did it run with the library?")
  endif()
endfunction()
