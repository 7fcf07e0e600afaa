# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# vigil_add_manual_page(PROGRAM SECTION COMPONENT): makes the page from docs/PROGRAM.SECTION.md and installs it with the
# component.

find_program(VIGIL_GO_MD2MAN go-md2man)

function(vigil_add_manual_page program section component)
  if(NOT VIGIL_GO_MD2MAN)
    message(STATUS "go-md2man not found: there will be no manual page ${program}(${section})")
    return()
  endif()
  set(source ${PROJECT_SOURCE_DIR}/docs/${program}.${section}.md)
  set(page ${PROJECT_BINARY_DIR}/docs/${program}.${section})
  add_custom_command(OUTPUT ${page}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/docs
    COMMAND ${VIGIL_GO_MD2MAN} -in ${source} -out ${page}
    DEPENDS ${source})
  add_custom_target(${program}-man ALL DEPENDS ${page})
  if(VIGIL_INSTALL)
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
  endif()
endfunction()
