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
vigil_write_sbom(${PACKAGE} ${Package} ${Version} ${EPOCH} ${parts})
