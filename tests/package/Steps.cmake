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

# unpack(ARCHIVE FOLDER), by a relative path: in the C locale CMake unpacks nothing, without an error, from a path that is
# not ASCII.
function(unpack archive folder)
  file(MAKE_DIRECTORY ${folder})
  file(RELATIVE_PATH source ${folder} ${archive})
  run(${CMAKE_COMMAND} -E chdir ${folder} ${CMAKE_COMMAND} -E tar xf ${source})
endfunction()

function(expect_files)
  foreach(file IN LISTS ARGN)
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "There is no ${file}")
    endif()
  endforeach()
endfunction()

# configure(SOURCE_DIR BUILD_DIR PREFIX [ARGUMENT...]): a separate project, against the installation in PREFIX, with
# arguments for cmake.
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
    -D CMAKE_PREFIX_PATH=${prefix}
    ${ARGN})
endfunction()

# Lets later programs find the DLLs in PREFIX. Nothing listens on port 1: they must run without a
# service, too.
macro(prepare_environment prefix)
  set(ENV{VIGIL_SERVICE_PORT} 1)
  set(ENV{VIGIL_LOG_DIR} ${DRIVE}${WORK_DIR}/log)
  set(ENV{WINEPATH} ${DRIVE}${prefix}/bin) # like PATH on Windows itself
endmacro()

# build_consumer(PREFIX [ARGUMENT...]): builds the consumer project, with arguments for cmake, and runs it.
function(build_consumer prefix)
  set(build ${WORK_DIR}/build)
  file(REMOVE_RECURSE ${build} ${WORK_DIR}/log)
  configure(${CONSUMER_DIR} ${build} ${prefix} ${ARGN})
  run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})
  prepare_environment(${prefix})
  run(${CMAKE_CTEST_COMMAND} --test-dir ${build} -C ${CONFIG} --output-on-failure)
  if(NOT EXISTS ${WORK_DIR}/log)
    message(FATAL_ERROR "The consumer left no log: did it run with the library?")
  endif()
endfunction()

# test_an_application(PREFIX): builds the example of an application with tests of its own, and runs these.
function(test_an_application prefix)
  set(build ${WORK_DIR}/tested)
  if(GOOGLETEST) # its sources, where none is installed
    set(modules -D CMAKE_MODULE_PATH=${CMAKE_CURRENT_FUNCTION_LIST_DIR}/modules -D VIGIL_GOOGLETEST_SOURCE=${GOOGLETEST})
  endif()
  configure(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../../examples/tested-application ${build} ${prefix} ${modules})
  run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})
  prepare_environment(${prefix})
  run(${CMAKE_CTEST_COMMAND} --test-dir ${build} -C ${CONFIG} --output-on-failure)
  if(NOT output MATCHES "100% tests passed, 0 tests failed out of 1")
    message(FATAL_ERROR "The application has no test:\n${output}")
  endif()
endfunction()

# check_units(DIRECTORY BIN): systemd finds no mistake in the units of DIRECTORY. Their programs are in BIN.
function(check_units directory bin)
  file(GLOB units ${directory}/vigil-*.service ${directory}/vigil-*.socket)
  if(NOT SYSTEMD_ANALYZE OR NOT units)
    return()
  endif()
  run(${SYSTEMD_ANALYZE} --help)
  string(FIND "${output}" "--offline" offline) # since systemd 250
  set(copies "")
  foreach(unit IN LISTS units) # systemd-analyze looks for the program where it will be installed
    get_filename_component(name ${unit} NAME)
    file(READ ${unit} text)
    string(REGEX REPLACE "ExecStart=[^ \n]*/([^ \n]*)" "ExecStart=\"${bin}/\\1\"" text "${text}")
    file(WRITE ${WORK_DIR}/units/${name} "${text}")
    list(APPEND copies ${WORK_DIR}/units/${name})
  endforeach()
  run(${SYSTEMD_ANALYZE} verify --man=no ${copies})
  if(output MATCHES "vigil-") # bad lines are only ignored
    message(FATAL_ERROR "The units have mistakes:\n${output}")
  endif()
  foreach(unit IN LISTS copies)
    if(unit MATCHES "\\.service$" AND NOT offline EQUAL -1) # 25 stands for an exposure of 2.5
      set(threshold 25)
      if(unit MATCHES "vigil-agent")
        set(threshold 12)
      endif()
      run(${SYSTEMD_ANALYZE} security --offline=true --threshold=${threshold} ${unit})
    endif()
  endforeach()
endfunction()

# check_sbom(PACKAGE_FILE [PART...]): the bill of materials beside the file is of this file, gives each part a version and
# a licence, and names these parts, each a regular expression. Sets sbom_versions (name=version) and sbom_files.
function(check_sbom file)
  expect_files(${file}.spdx.json)
  file(READ ${file}.spdx.json sbom)
  string(JSON version GET "${sbom}" spdxVersion)
  string(JSON listed GET "${sbom}" packages 0 checksums 0 checksumValue)
  file(SHA256 ${file} hash)
  if(NOT version STREQUAL "SPDX-2.3" OR NOT listed STREQUAL hash)
    message(FATAL_ERROR "${file}.spdx.json is ${version}, of a file with the hash ${listed}")
  endif()
  string(JSON count LENGTH "${sbom}" packages)
  math(EXPR last "${count} - 1")
  set(versions "")
  set(files "")
  foreach(number RANGE ${last})
    string(JSON name GET "${sbom}" packages ${number} name)
    string(JSON version GET "${sbom}" packages ${number} versionInfo)
    string(JSON licence GET "${sbom}" packages ${number} licenseConcluded)
    string(JSON part_file ERROR_VARIABLE none GET "${sbom}" packages ${number} packageFileName)
    if(version STREQUAL "" OR licence STREQUAL "")
      message(FATAL_ERROR "${file}.spdx.json has ${name} with the version \"${version}\" and the licence \"${licence}\"")
    endif()
    list(APPEND versions "${name}=${version}")
    list(APPEND files ${part_file})
  endforeach()
  foreach(part IN LISTS ARGN)
    if(NOT ";${versions}" MATCHES ";${part}=")
      message(FATAL_ERROR "${file}.spdx.json has no part ${part}: ${versions}")
    endif()
  endforeach()
  set(sbom_versions "${versions}" PARENT_SCOPE)
  set(sbom_files "${files}" PARENT_SCOPE)
endfunction()
