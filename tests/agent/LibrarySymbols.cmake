# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Fails if PROGRAM defines a function of OBJECTS. NM lists the symbols of both.

function(read_functions result)
  execute_process(COMMAND ${NM} --defined-only ${ARGN} OUTPUT_VARIABLE symbols RESULT_VARIABLE result_code)
  if(result_code)
    message(FATAL_ERROR "${NM} failed: ${result_code}")
  endif()
  string(REGEX MATCHALL " T [^\n]+" functions "${symbols}")
  set(${result} ${functions} PARENT_SCOPE)
endfunction()

list(FILTER OBJECTS INCLUDE REGEX "\\.o(bj)?$") # the list also has the precompiled header
read_functions(library ${OBJECTS})
read_functions(program ${PROGRAM})
if(NOT library OR NOT program)
  message(FATAL_ERROR "No functions found: does ${NM} read these files?")
endif()

set(own ${program})
list(REMOVE_ITEM own ${library})
set(shared ${program})
list(REMOVE_ITEM shared ${own})
if(shared)
  list(JOIN shared "\n" lines)
  message(FATAL_ERROR "${PROGRAM} contains parts of the library:\n${lines}")
endif()
