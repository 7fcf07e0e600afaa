# Run by CTest, see CMakeLists.txt.
file(READ ${README} readme)
file(READ ${PROGRAM} program)
string(FIND "${readme}" "```cpp\n${program}```\n" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${README} does not show ${PROGRAM} as it is")
endif()
