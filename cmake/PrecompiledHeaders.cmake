# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# ccache takes a compilation with a precompiled header for its own only if it may overlook two things: the macros that
# the header defines and its time stamp.
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "^[^;]*ccache$")
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # The same input gives the same precompiled header, so that ccache knows it again.
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
endif()
