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

# The manual page has every option of the help with its defaults.
execute_process(COMMAND ${EMULATOR} ${PROGRAM} --help OUTPUT_VARIABLE help)
file(READ ${MANUAL} manual)
string(REGEX MATCHALL "\n  [a-z]+ +[^\n]+  [^ \n]+ +[^ \n]+" rows "${help}")
list(LENGTH rows count)
if(count LESS 6)
  message(FATAL_ERROR "${count} quantities found in\n${help}")
endif()
foreach(row IN LISTS rows)
  string(REGEX MATCH "\n  ([a-z]+) .* ([^ ]+) +([^ ]+)$" unused "${row}")
  set(entry "\n\\*\\*--${CMAKE_MATCH_1}-warning\\*\\* [^\n]*--${CMAKE_MATCH_1}-critical[^\n]*\n[^\n]*Defaults: ${CMAKE_MATCH_2} and ${CMAKE_MATCH_3}\\.\n")
  if(NOT manual MATCHES "${entry}")
    message(FATAL_ERROR "${MANUAL} does not have${row}")
  endif()
endforeach()
