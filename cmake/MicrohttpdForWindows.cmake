# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# PkgConfig::MICROHTTPD for Windows, from the static library of scripts/build-windows-microhttpd in VIGIL_MICROHTTPD.

add_library(PkgConfig::MICROHTTPD INTERFACE IMPORTED)
target_include_directories(PkgConfig::MICROHTTPD SYSTEM INTERFACE ${VIGIL_MICROHTTPD}/include)
target_link_libraries(PkgConfig::MICROHTTPD INTERFACE ${VIGIL_MICROHTTPD}/lib/libmicrohttpd.a ws2_32)
set(MICROHTTPD_FOUND ON)
set(MICROHTTPD_FOUND ON PARENT_SCOPE) # for the tests
