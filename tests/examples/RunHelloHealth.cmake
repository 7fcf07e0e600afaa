# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by CTest, see CMakeLists.txt. No service listens on port 1.
file(REMOVE_RECURSE ${LOG_DIR})
set(ENV{VIGIL_SERVICE_PORT} 1)
set(ENV{VIGIL_LOG_DIR} ${DRIVE}${LOG_DIR})
execute_process(COMMAND ${EMULATOR} ${PROGRAM} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_QUIET)
file(GLOB log_files ${LOG_DIR}/*.log)
file(REMOVE_RECURSE ${LOG_DIR})

if(NOT result EQUAL 0)
  message(FATAL_ERROR "hello_health ended with ${result}:\n${output}")
endif()
string(REPLACE "\r\n" "\n" output "${output}")
set(ok "Hello, health\n")
set(warning "Hello, health - out of warning range: seconds is")
set(expected "${ok}${ok}${ok}${warning} 4 s.\n${warning} 5 s.\n")
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "hello_health printed\n${output}instead of\n${expected}")
endif()
if(NOT log_files)
  message(FATAL_ERROR "hello_health left no log in ${LOG_DIR}")
endif()
