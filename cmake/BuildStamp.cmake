# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Sets vigil_build_stamp (year to hour) and vigil_build_date (year to day), both UTC. They come from SOURCE_DATE_EPOCH or
# from the last commit, never from the clock: the same sources always give the same binary.

set(vigil_build_epoch "$ENV{SOURCE_DATE_EPOCH}")
if(vigil_build_epoch STREQUAL "")
  find_package(Git QUIET)
  if(Git_FOUND)
    execute_process(
      COMMAND ${GIT_EXECUTABLE} log -1 --format=%ct
      WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
      OUTPUT_VARIABLE vigil_build_epoch
      OUTPUT_STRIP_TRAILING_WHITESPACE
      ERROR_QUIET)
  endif()
endif()
if(NOT vigil_build_epoch MATCHES "^[0-9]+$")
  message(STATUS "Neither SOURCE_DATE_EPOCH nor a git commit: the build stamp is that of 1970")
  set(vigil_build_epoch 0)
endif()

set(vigil_outer_epoch "$ENV{SOURCE_DATE_EPOCH}")
set(ENV{SOURCE_DATE_EPOCH} ${vigil_build_epoch})
string(TIMESTAMP vigil_build_stamp "%Y%m%d%H" UTC)
string(TIMESTAMP vigil_build_date "%Y%m%d" UTC)
set(ENV{SOURCE_DATE_EPOCH} "${vigil_outer_epoch}")
