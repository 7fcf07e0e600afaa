# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by CTest, see CMakeLists.txt.
file(READ ${HEADER} header)
string(REGEX REPLACE "^.*extern \"C\" {" "" header "${header}") # the example at the top calls functions, too
string(REGEX MATCHALL "[ *](vigil_[a-z_0-9]+)\\(" calls "${header}")
list(TRANSFORM calls REPLACE "[ *(]" "" OUTPUT_VARIABLE in_header)
file(STRINGS ${DEFINITION} in_definition REGEX "^  vigil_")
list(TRANSFORM in_definition STRIP)
file(STRINGS ${EXPORTS} in_exports REGEX "^vigil_")
list(REMOVE_ITEM in_exports vigil_cxx_set_unknown) # for the C++ headers alone
foreach(list in_header in_definition in_exports)
  list(SORT ${list})
  list(REMOVE_DUPLICATES ${list})
endforeach()
if(NOT in_header OR NOT in_header STREQUAL in_definition OR NOT in_header STREQUAL in_exports)
  message(FATAL_ERROR "The lists differ:\n${in_header}\n${in_definition}\n${in_exports}")
endif()
