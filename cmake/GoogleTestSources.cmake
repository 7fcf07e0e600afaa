# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# GoogleTest from its sources in VIGIL_GOOGLETEST_SOURCE, for a system for which it is not installed. Like an installed
# one it is not our code to warn about.

add_subdirectory(${VIGIL_GOOGLETEST_SOURCE} ${CMAKE_CURRENT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(target gtest gmock)
  get_target_property(directories ${target} INTERFACE_INCLUDE_DIRECTORIES)
  target_include_directories(${target} SYSTEM INTERFACE ${directories})
endforeach()
