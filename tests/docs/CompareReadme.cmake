# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by CTest, see CMakeLists.txt.
file(READ ${README} readme)
file(READ ${PROGRAM} program)
# The README leaves out the two lines about the licence.
string(REGEX REPLACE "^(// SPDX[^\n]*\n)+\n" "" program "${program}")
string(FIND "${readme}" "```cpp\n${program}```\n" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${README} does not show ${PROGRAM} as it is")
endif()
