# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by CTest, see CMakeLists.txt. No service listens on port 1.
set(ENV{VIGIL_SERVICE_PORT} 1)
set(ENV{VIGIL_LOG_DIR} ${DRIVE}${LOG_DIR})
execute_process(COMMAND ${COMMAND} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_QUIET)
file(REMOVE_RECURSE ${LOG_DIR})
string(REPLACE "\r\n" "\n" output "${output}")
set(ok "Hello, health\n")
set(warning "Hello, health - out of warning range: seconds is")
if(NOT result EQUAL 0 OR NOT output STREQUAL "${ok}${ok}${ok}${warning} 4 s.\n${warning} 5 s.\n")
  message(FATAL_ERROR "${COMMAND} ended with ${result} and printed\n${output}")
endif()
