# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# The pages of the public headers, by Doxygen. A warning fails the build.

find_package(Doxygen REQUIRED)

configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/docs/Doxyfile @ONLY)
file(GLOB vigil_documented CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/include/vigil/*.h ${PROJECT_SOURCE_DIR}/include/vigil/testing/*.h)
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/docs/html/index.html
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/docs/html
  COMMAND ${DOXYGEN_EXECUTABLE} ${PROJECT_BINARY_DIR}/docs/Doxyfile
  DEPENDS ${vigil_documented} ${PROJECT_SOURCE_DIR}/docs/api.dox ${PROJECT_BINARY_DIR}/docs/Doxyfile)
add_custom_target(documentation ALL DEPENDS ${PROJECT_BINARY_DIR}/docs/html/index.html)
if(VIGIL_INSTALL)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT dev)
endif()
