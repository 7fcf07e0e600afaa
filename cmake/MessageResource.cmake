# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# The texts of the agent's lines in Windows' event log: a resource of the program, and a header with their numbers.

find_program(VIGIL_MESSAGE_COMPILER NAMES ${mingw_target}-windmc windmc mc REQUIRED)
enable_language(RC)
set(messages ${CMAKE_CURRENT_BINARY_DIR}/messages)
file(MAKE_DIRECTORY ${messages})
add_custom_command(
  OUTPUT ${messages}/ServiceMessages.h ${messages}/ServiceMessages.rc
  COMMAND ${VIGIL_MESSAGE_COMPILER} -h ${messages} -r ${messages} ${CMAKE_CURRENT_SOURCE_DIR}/process/ServiceMessages.mc
  DEPENDS process/ServiceMessages.mc
  VERBATIM)
add_custom_target(vigil_messages DEPENDS ${messages}/ServiceMessages.h)
add_dependencies(vigil_agent_objects vigil_messages)
target_include_directories(vigil_agent_objects PRIVATE ${messages})
add_dependencies(vigil-agent vigil_messages)
target_sources(vigil-agent PRIVATE ${messages}/ServiceMessages.rc)
