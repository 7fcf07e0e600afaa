# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Fails unless LIBRARY exports exactly the names in LIST. Run by CTest, see CMakeLists.txt.
cmake_policy(SET CMP0057 NEW) # if(IN_LIST)

function(run_tool)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN} ended with ${result}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(STRINGS ${LIST} expected)
if(WINDOWS)
  run_tool(${OBJDUMP} -p ${LIBRARY})
  string(REGEX REPLACE "^.*\\[Ordinal/Name Pointer\\] Table" "" output "${output}")
  set(line_pattern "\n\t\\[ *[0-9]+\\][^\n]* ([_A-Za-z0-9]+)")
else()
  # Weak symbols, first of all vtables and type information, depend on compiler and optimisation.
  run_tool(${NM} -D --defined-only ${LIBRARY})
  list(FILTER expected EXCLUDE REGEX "^_ZT")
  set(line_pattern "[0-9a-f]+ [B-UX-Z] ([_A-Za-z0-9]+)") # A are the versions themselves
  # The version of each symbol: that of the C interface for its functions, that of the classes for all else.
  string(REGEX MATCHALL " (vigil_[_a-z0-9]+@@VIGIL_1|_Z[^@\n]+@@VIGIL_C_1|[^@ \n]+)\n" misplaced "${output}")
  list(FILTER misplaced EXCLUDE REGEX "^ VIGIL_(C_)?1\n")
  if(misplaced)
    message(FATAL_ERROR "${LIBRARY} has symbols of the wrong version: ${misplaced}")
  endif()
endif()
string(REGEX MATCHALL "${line_pattern}" lines "${output}")
if(NOT lines)
  message(FATAL_ERROR "${LIBRARY} shows no exports")
endif()
list(TRANSFORM lines REPLACE "${line_pattern}" "\\1" OUTPUT_VARIABLE found)

set(difference "")
foreach(name IN LISTS expected)
  if(NOT name IN_LIST found)
    string(APPEND difference "  missing: ${name}\n")
  endif()
endforeach()
foreach(name IN LISTS found)
  if(NOT name IN_LIST expected)
    string(APPEND difference "  added: ${name}\n")
  endif()
endforeach()
if(difference)
  message(FATAL_ERROR "${LIBRARY} does not export what ${LIST} says:\n${difference}")
endif()
