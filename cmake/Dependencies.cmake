# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Finds what the library needs. A project that contains this one also links these targets if it links the static
# library, so they are made visible there, unless that project has found them itself.

set(vigil_found_before "")
foreach(target Qt5::Core Qt5::Network Threads::Threads)
  if(TARGET ${target})
    list(APPEND vigil_found_before ${target})
  endif()
endforeach()

find_package(Qt5 5.15 REQUIRED COMPONENTS Core Network)
find_package(Threads REQUIRED)

foreach(target Qt5::Core Qt5::Network Threads::Threads)
  if(NOT target IN_LIST vigil_found_before)
    set_target_properties(${target} PROPERTIES IMPORTED_GLOBAL ON)
  endif()
endforeach()
