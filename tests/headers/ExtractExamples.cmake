# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Writes a program to OUTPUT that runs the \code example of each header of HEADERS. Run by the build, see CMakeLists.txt.
set(program "#include <vigil/raii.h>\n#include <vigil/testing/FakeService.h>\n#include <vigil/vigil.h>\n\n#include <atomic>\n#include <iostream>\n")
set(calls "")
foreach(name IN LISTS HEADERS)
  file(READ ${INCLUDE_DIR}/${name}.h text)
  string(FIND "${text}" "/// \\code\n" begin)
  string(FIND "${text}" "/// \\endcode\n" end)
  if(begin EQUAL -1 OR end LESS begin)
    message(FATAL_ERROR "${name}.h has no \\code example")
  endif()
  string(SUBSTRING "${text}" 0 ${begin} before)
  string(REGEX REPLACE "[^\n]" "" line "${before}")
  string(LENGTH "${line}" line) # compilers count from 1, and \code is a line, too
  math(EXPR line "${line} + 2")
  math(EXPR begin "${begin} + 10")
  math(EXPR length "${end} - ${begin}")
  string(SUBSTRING "${text}" ${begin} ${length} example)
  string(REGEX REPLACE "(^|\n)/// ?" "\\1" example "${example}")
  get_filename_component(name ${name} NAME)
  string(APPEND program "\nstatic void example${name}()\n{\n#line ${line} \"${name}.h\"\n${example}}\n")
  string(APPEND calls "    example${name}();\n")
endforeach()
file(WRITE ${OUTPUT} "${program}\nint main()\n{\n${calls}}\n")
