# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by CTest, see CMakeLists.txt.
function(expect_end code stream text)
  execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE stdout ERROR_VARIABLE stderr)
  string(FIND "${${stream}}" "${text}" position)
  if(NOT result EQUAL ${code} OR position EQUAL -1)
    message(FATAL_ERROR "${PROGRAM} ${ARGN} ended with ${result} and wrote\n${stdout}${stderr}")
  endif()
endfunction()

expect_end(0 stdout "Usage: vigil-host-health" --help)
expect_end(2 stderr "--load-warning lots: expected a range" --load-warning lots)
expect_end(2 stderr "--interval 0: expected seconds" --interval 0)
expect_end(2 stderr "unknown option --loud" --loud)
