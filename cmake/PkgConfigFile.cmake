# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# vigil.pc, for builds without CMake. Its paths start from its own place, so the prefix can be moved.

set(vigil_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(vigil_pc_prefix ${CMAKE_INSTALL_PREFIX})
  set(vigil_pc_libdir ${CMAKE_INSTALL_FULL_LIBDIR})
  set(vigil_pc_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  file(RELATIVE_PATH vigil_pc_prefix /${vigil_pc_dir} /)
  string(REGEX REPLACE "/$" "" vigil_pc_prefix "\${pcfiledir}/${vigil_pc_prefix}")
  set(vigil_pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(vigil_pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
if(VIGIL_BUILD_STATIC) # for pkg-config --static; VIGIL_STATIC_DEFINE belongs to the static library alone
  set(vigil_pc_static "Libs.private: -lQt5Network -lQt5Core -pthread -ldl\nCflags.private: -DVIGIL_STATIC_DEFINE\n")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/vigil.pc.in ${PROJECT_BINARY_DIR}/vigil.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vigil.pc DESTINATION ${vigil_pc_dir} COMPONENT dev)
