# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Builds GoogleTest from its sources in VIGIL_GOOGLETEST_SOURCE, where no installed one fits. Its headers are system
# headers: the compiler does not warn about them.

add_subdirectory(${VIGIL_GOOGLETEST_SOURCE} ${CMAKE_CURRENT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(target gtest gmock)
  get_target_property(directories ${target} INTERFACE_INCLUDE_DIRECTORIES)
  target_include_directories(${target} SYSTEM INTERFACE ${directories})
endforeach()
