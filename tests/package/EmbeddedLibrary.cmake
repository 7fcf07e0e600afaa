# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by scripts/test-packages: the sources as part of another project, which gets the library and nothing else.

set(GENERATOR Ninja)
set(CONFIG Debug)
set(COMPILER c++)
include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

set(build ${WORK_DIR}/build)
configure(${CMAKE_CURRENT_LIST_DIR}/embedding ${build} "" -D VIGIL_SOURCE=${SOURCE_DIR} -D CMAKE_UNITY_BUILD=ON)
run(${CMAKE_COMMAND} --build ${build})
prepare_environment(${WORK_DIR})
run(${CMAKE_CTEST_COMMAND} --test-dir ${build} --output-on-failure)
if(NOT output MATCHES "100% tests passed, 0 tests failed out of 2")
  message(FATAL_ERROR "There are tests of vigil:\n${output}")
endif()

run(${CMAKE_COMMAND} --build ${build} --target help)
foreach(unwanted vigil-agent hello_health gmock vigil-host-health)
  if(output MATCHES "${unwanted}")
    message(FATAL_ERROR "The project has a target ${unwanted}")
  endif()
endforeach()
run(${CMAKE_COMMAND} --install ${build} --prefix ${WORK_DIR}/prefix)
file(GLOB_RECURSE installed ${WORK_DIR}/prefix/*)
if(installed)
  message(FATAL_ERROR "The project installs ${installed}")
endif()
