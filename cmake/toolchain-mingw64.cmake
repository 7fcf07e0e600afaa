# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Builds for Windows x86-64 on a Unix system, with the MinGW-w64 cross compiler for POSIX threads (the other variant has no
# std::thread). Libraries are only searched in CMAKE_PREFIX_PATH, never among the system's own. Wine runs the programs.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(mingw_target x86_64-w64-mingw32)
find_program(MINGW_C_COMPILER NAMES ${mingw_target}-gcc-posix ${mingw_target}-gcc REQUIRED)
find_program(MINGW_CXX_COMPILER NAMES ${mingw_target}-g++-posix ${mingw_target}-g++ REQUIRED)
set(CMAKE_C_COMPILER ${MINGW_C_COMPILER})
set(CMAKE_CXX_COMPILER ${MINGW_CXX_COMPILER})
set(CMAKE_RC_COMPILER ${mingw_target}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${mingw_target} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A prefix is Wine's folder for a Windows machine. Each build folder has its own, unless WINEPREFIX names one.
set(wine_prefix $ENV{WINEPREFIX})
if(NOT wine_prefix)
  set(wine_prefix ${CMAKE_BINARY_DIR}/wine)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine ${wine_prefix})
