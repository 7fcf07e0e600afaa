# Run by CTest, see CMakeLists.txt. Any step that fails ends the script with an error.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nfailed with ${result}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
set(build ${WORK_DIR}/build)

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
endforeach()

foreach(file LICENSE README.md examples/hello_health.cpp)
  file(GLOB_RECURSE found ${prefix}/share/doc/*/${file})
  if(NOT found)
    message(FATAL_ERROR "${file} is not installed")
  endif()
endforeach()
foreach(module VIGIL-MIB VIGIL-AGENT-MIB)
  if(NOT EXISTS ${prefix}/share/snmp/mibs/${module}.txt)
    message(FATAL_ERROR "${module} is not installed")
  endif()
endforeach()

if(TOOLCHAIN)
  set(tools -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
  list(GET EMULATOR -1 wine_prefix)
  set(ENV{WINEPREFIX} ${wine_prefix}) # to make a new one takes long
else()
  set(tools -D CMAKE_CXX_COMPILER=${COMPILER})
endif()
run(${CMAKE_COMMAND} -S ${CONSUMER_DIR} -B ${build} -G ${GENERATOR}
  -D CMAKE_BUILD_TYPE=${CONFIG}
  ${tools}
  -D CMAKE_CXX_FLAGS=${FLAGS}
  -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})

# Nobody listens on port 1: the program must run without a service, too.
set(ENV{VIGIL_SERVICE_PORT} 1)
set(ENV{VIGIL_LOG_DIR} ${DRIVE}${WORK_DIR}/log)
set(ENV{WINEPATH} ${DRIVE}${prefix}/bin) # what PATH is on Windows itself
run(${CMAKE_CTEST_COMMAND} --test-dir ${build} -C ${CONFIG} --output-on-failure)

if(NOT EXISTS ${WORK_DIR}/log)
  message(FATAL_ERROR "The consumer left no log: did it run with the library?")
endif()
file(REMOVE_RECURSE ${WORK_DIR})
