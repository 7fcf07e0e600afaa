# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# cmake -D EPOCH=SECONDS -D PACKAGE=FILE.deb -P DebianSbom.cmake: writes the bill of materials of a Debian package, with
# the versions of this system's packages it was built with.

include(${CMAKE_CURRENT_LIST_DIR}/Sbom.cmake)

function(field name)
  execute_process(COMMAND dpkg-deb --field ${PACKAGE} ${name}
    OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${name} "${value}" PARENT_SCOPE)
endfunction()
field(Package)
field(Version)
field(Depends)

set(parts "")
string(REGEX REPLACE ", *" ";" dependencies "${Depends}")
foreach(dependency IN LISTS dependencies)
  string(REGEX MATCH "^[^ :|]+" name "${dependency}") # of several possible ones the first
  if(name MATCHES "vigil") # is made with this one
    set(version ${Version})
  else()
    execute_process(COMMAND dpkg-query --show "--showformat=\${Version}\n" ${name} OUTPUT_VARIABLE version ERROR_QUIET)
    string(REGEX REPLACE "\n.*" "" version "${version}") # one line an architecture
  endif()
  list(APPEND parts "DEPENDS_ON|${name}|${version}|NOASSERTION|")
endforeach()

# The pages of the headers bring scripts. Doxygen joins those of several projects to one file; each tells its version.
execute_process(COMMAND dpkg-deb --fsys-tarfile ${PACKAGE}
  COMMAND tar --extract --to-stdout --wildcards ./usr/share/doc/*/html/jquery.js
  OUTPUT_VARIABLE scripts ERROR_QUIET)
if(scripts)
  execute_process(COMMAND doxygen --version OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "^[0-9.]+" version "${version}")
  list(APPEND parts "CONTAINS|Doxygen's scripts|${version}|MIT|")
endif()
foreach(script
    "jQuery|jQuery v|MIT"
    "jQuery UI|jQuery UI - v|MIT"
    "jQuery UI Touch Punch|jQuery UI Touch Punch |MIT"
    "jQuery.scrollTo|@author Ariel Flesler[^0-9]*|MIT"
    "PowerTip|PowerTip v|MIT"
    "SmartMenus|SmartMenus jQuery Plugin - v|MIT")
  string(REGEX MATCH "^([^|]*)\\|([^|]*)\\|(.*)$" unused "${script}")
  set(name "${CMAKE_MATCH_1}")
  set(licence ${CMAKE_MATCH_3})
  if(scripts MATCHES "${CMAKE_MATCH_2}([0-9][0-9.]*)")
    list(APPEND parts "CONTAINS|${name}|${CMAKE_MATCH_1}|${licence}|")
  endif()
endforeach()
vigil_write_sbom(${PACKAGE} ${Package} ${Version} ${EPOCH} ${parts})
